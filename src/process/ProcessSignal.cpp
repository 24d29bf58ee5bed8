#include "process/ProcessSignal.h"

#include <errno.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/PosixFile.h"
#include "process/ChildWatch.h"

// A process identifier is only a number: once its process has been reaped, the system may give it
// to another one.  A process descriptor always means the process that it was opened for, so it is
// opened first, then its process is checked to be the wanted one, then the signal is sent through
// it.  If the system has no such descriptors, or none is free, the identifier is used.

namespace vor {
namespace {

// Of the system's linux/pidfd.h, since Linux 6.9.
constexpr unsigned kToGroup = 1u << 2;

// \a flags: 0 or kToGroup, for the group that the process leads.
template <typename IsWanted>
int Signal(pid_t pid, int signal, unsigned flags, IsWanted isWanted) {
  const FileDescriptor process = OpenProcess(pid);
  if (!isWanted()) return ESRCH;
  if (process.IsOpen()) {
    if (syscall(SYS_pidfd_send_signal, process.Get(), signal, nullptr, flags) == 0) return 0;
    const bool isUnknown = errno == ENOSYS || (errno == EINVAL && flags != 0);
    if (!isUnknown) return errno;
  }
  return kill(flags == 0 ? pid : -pid, signal) == 0 ? 0 : errno;
}

}  // namespace

bool IsChild(pid_t pid) {
  siginfo_t info;
  const int flags = WEXITED | WNOHANG | WNOWAIT;
  return pid > 0 && waitid(P_PID, static_cast<id_t>(pid), &info, flags) == 0;
}

int SignalChild(pid_t pid, int signal) {
  return Signal(pid, signal, 0, [&] { return IsChild(pid); });
}

int SignalGroup(pid_t leader, int signal) {
  return Signal(leader, signal, kToGroup, [&] { return IsChild(leader); });
}

int SignalProcess(const ProcessRow& process, int signal) {
  return Signal(process.pid, signal, 0,
                [&] { return process.start == 0 || ReadStartTime(process.pid) == process.start; });
}

int SignalWanted(pid_t pid, int signal, const std::function<bool()>& isWanted) {
  return Signal(pid, signal, 0, isWanted);
}

}  // namespace vor
