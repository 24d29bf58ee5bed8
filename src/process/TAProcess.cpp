#include "process/TAProcess.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "base/VorListValVorString.h"
#include "foundation/Tracing.h"
#include "process/ChildStart.h"
#include "process/CommandLine.h"
#include "process/Container.h"
#include "process/ProcessSignal.h"
#include "process/ProcessTable.h"
#include "process/ProcessTree.h"
#include "process/ShellCall.h"
#include "process/StoppedTree.h"

namespace {

// The result of system() if kill finds no such process: exit code 1.
constexpr int kNothingKilled = 256;

// exec takes 131,072 bytes in one argument, and the shell gets a command as one.
constexpr std::size_t kLongestCommand = 130000;

int Fold(int rawStatus) {
  const unsigned raw = static_cast<unsigned>(rawStatus);
  return static_cast<int>(raw < 256 ? raw : raw >> 8);
}

TAProcessEnd EndFrom(int rawStatus) {
  TAProcessEnd end;
  const bool isSignal = WIFSIGNALED(rawStatus);
  end.kind = isSignal ? TAProcessEnd::Signalled : TAProcessEnd::Exited;
  end.code = isSignal ? WTERMSIG(rawStatus) : WEXITSTATUS(rawStatus);
  end.coreDumped = isSignal && WCOREDUMP(rawStatus);
  return end;
}

TAProcessEnd LostEnd() {
  TAProcessEnd end;
  end.kind = TAProcessEnd::Lost;
  return end;
}

vor::Container::Entry EntryOf(const vor::Container* container) {
  return container == nullptr ? vor::Container::Entry() : container->GetEntry();
}

TAProcessEnd NotStartedFor(int error) {
  TAProcessEnd end;
  end.kind = TAProcessEnd::NotStarted;
  end.code = error;
  return end;
}

long long NanosecondsSinceBoot() {
  timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

// 0 for a child that this object did not start.
double SecondsSince(long long startNs) {
  return startNs == 0 ? 0 : static_cast<double>(NanosecondsSinceBoot() - startNs) / 1e9;
}

// A program may ask to be traced by its parent (PTRACE_TRACEME).  It then stops at each signal, and
// waitpid reports that too.  Continues it without tracing and delivers \a signal, unless that is a
// stop signal.
void ContinueUntraced(pid_t pid, int signal) {
  constexpr int kStops[] = {SIGTRAP, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU};
  const bool isStop = std::find(std::begin(kStops), std::end(kStops), signal) != std::end(kStops);
  ptrace(PTRACE_DETACH, pid, nullptr, isStop ? 0 : signal);
}

// waitpid for an end.
pid_t WaitFor(pid_t pid, int& rawStatus, int flags) {
  for (;;) {
    rawStatus = 0;
    const pid_t ended = waitpid(pid, &rawStatus, flags);
    if (ended > 0 && WIFSTOPPED(rawStatus)) {
      ContinueUntraced(ended, WSTOPSIG(rawStatus));
    } else if (ended >= 0 || errno != EINTR) {
      return ended;
    }
  }
}

// Waits for the end of a child without reaping it, with WNOHANG in \a flags not at all.  Returns
// whether it has ended or is no child any more.
bool WaitForUnreaped(pid_t pid, int flags) {
  for (;;) {
    siginfo_t info = {};
    if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT | flags) == 0) {
      if (info.si_pid == 0) return false;
      if (info.si_code != CLD_TRAPPED && info.si_code != CLD_STOPPED) return true;
      int rawStatus;
      if (waitpid(pid, &rawStatus, WNOHANG) == pid) ContinueUntraced(pid, WSTOPSIG(rawStatus));
    } else if (errno != EINTR) {
      return errno == ECHILD;
    }
  }
}

// After a signal was sent with the result \a error: 0 if the process got it, has gone or belongs to
// another user; 1 with a message if it could not be sent.
int ReportSignal(int error) {
  if (error == 0 || error == ESRCH || error == EPERM) return 0;
  printf("Error unable to kill process\n");
  return 1;
}

int NumberOfSignal(int hard) {
  return hard != 0 ? SIGKILL : SIGTERM;
}

}  // namespace

TAProcess::TAProcess() : _errMsg("no error") {}

TAProcess::TAProcess(int& pid) : _errMsg("no error"), _pid(pid) {}

TAProcess::~TAProcess() = default;

int TAProcess::SetOutput(const VorString& file) {
  _output = file;
  return 0;
}

int TAProcess::SetInput(const VorString& file) {
  _input = file;
  return 0;
}

int TAProcess::Start(const VorString& command, int) {
  vor::ChildSettings settings;
  settings.output = _output;
  settings.input = _input;
  settings.filesRequired = false;
  MakeContainer();
  vor::StartedChild child =
      vor::StartChild({vor::ParseCommandLine(command), settings, EntryOf(_container.get())});
  _pid = std::max(child.pid, 0);
  if (_container != nullptr) _container->NoteStart(_pid);
  _reaped = false;
  _isOwn = true;
  _end = TAProcessEnd();
  if (child.error != 0) _end = NotStartedFor(child.error);
  _lateError = std::move(child.lateError);
  _startNs = NanosecondsSinceBoot();
  if (child.pid > 0) return 0;
  _errMsg = "Unable to fork process";
  return 1;
}

int TAProcess::Check(int& status) {
  status = 0;
  return HasChild() ? Reap(status, WNOHANG) : -1;
}

int TAProcess::Wait(int& status) {
  status = 0;
  if (HasChild()) Reap(status, 0);
  return 0;
}

// waitpid, which notes an end.  An own child that is not there was reaped elsewhere, by the system
// for instance.
int TAProcess::Reap(int& status, int flags) {
  int rawStatus;
  const int left = KillLeft(flags);
  const int ended = WaitFor(_pid, rawStatus, flags);
  status = Fold(rawStatus);
  if (ended == _pid) NoteEnd(EndFrom(rawStatus));
  if (ended < 0 && _isOwn && errno == ECHILD) NoteEnd(LostEnd());
  if (ended != 0) _end.leftBehind = left;
  return ended;
}

// If a contained child has ended: does what has to be done before it is reaped.  Returns how many
// processes it had left and were killed.
int TAProcess::KillLeft(int flags) {
  if (_container == nullptr || !WaitForUnreaped(_pid, flags)) return 0;
  const int left = _killsLeft ? _container->SignalAll(SIGKILL) : 0;
  _container->PrepareReap();
  return left;
}

void TAProcess::NoteEnd(const TAProcessEnd& end) {
  _reaped = true;
  if (_lateError != nullptr && *_lateError != 0) _end = NotStartedFor(*_lateError);
  if (_end.kind == TAProcessEnd::NotStarted) return;
  _end = end;
  _end.seconds = SecondsSince(_startNs);
}

TAProcessEnd TAProcess::GetEnd() const {
  TAProcessEnd end = _end;
  if (end.kind == TAProcessEnd::NotEnded) end.seconds = SecondsSince(_startNs);
  return end;
}

// Checks before each signal that an own child was not reaped by the system.
bool TAProcess::MaySignal() {
  if (HasChild() && _isOwn && !vor::IsChild(_pid)) NoteEnd(LostEnd());
  return HasChild();
}

int TAProcess::SendSignal(int signal) const {
  if (_isOwn) return vor::SignalChild(_pid, signal);
  return kill(_pid, signal) == 0 ? 0 : errno;
}

int TAProcess::Exec(const VorString& command) {
  const int result = vor::RunInShell(command);
  return result < 257 ? result : result / 256;
}

int TAProcess::Kill() {
  if (!MaySignal()) return kNothingKilled;
  const int result = vor::RunInShell("kill -9 " + toString(_pid) + "> /dev/null 2>&1");
  if (result != 0) SendSignal(SIGKILL);
  return result;
}

int TAProcess::KillWithSig(int hard) {
  return MaySignal() ? ReportSignal(SendSignal(NumberOfSignal(hard))) : 0;
}

int TAProcess::KillTree() noexcept {
  const bool maySignal = MaySignal();
  if (_contained != TAContainment::Tree) {
    return Contained().SignalAll(SIGKILL) > 0 ? 0 : kNothingKilled;
  }
  if (!maySignal) return kNothingKilled;
  const vor::StoppedTree tree(_pid, _isOwn);
  int result = 0;
  for (const std::string& command : vor::KillCommands(tree.Processes(), kLongestCommand)) {
    const int one = vor::RunInShell(command.c_str(), &tree.Mask());
    if (result == 0) result = one;
  }
  if (result != 0) tree.SignalAll(SIGKILL);
  return result;
}

int TAProcess::KillTreeWithSig(int hard) noexcept {
  const bool maySignal = MaySignal();
  if (_contained != TAContainment::Tree) {
    Contained().SignalAll(NumberOfSignal(hard));
    return 0;
  }
  if (!maySignal) return 0;
  const vor::StoppedTree tree(_pid, _isOwn);
  for (const int error : tree.SignalAll(NumberOfSignal(hard))) ReportSignal(error);
  return 0;
}

void TAProcess::SetContainment(TAContainment containment) {
  _containment = containment;
}

void TAProcess::SetLeavesNobody(bool leavesNobody) {
  _leavesNobody = leavesNobody;
}

const char* TAProcess::ContainmentInUse() const {
  return vor::Container::MeansOf(_containment);
}

// Before a start.
void TAProcess::MakeContainer() {
  _container.reset();  // it may hold what the new one needs
  _container = vor::Container::Make(_containment);
  _contained = _containment;
  _killsLeft = _leavesNobody;
}

// The processes of the last child, also for Tree.
vor::Container& TAProcess::Contained() {
  if (_container == nullptr) _container = vor::Container::MakeForTree(HasChild() ? _pid : 0);
  return *_container;
}

int TAProcess::GetProcessTree(VorListValVorString& pids) const noexcept {
  if (_pid <= 0) return -1;
  if (pids.Size() == 0) {
    pids.Append(toString(_pid));
    if (_reaped) return 0;  // the identifier may be reused, and the children have another parent
  }
  vor::ProcessTable table;
  if (!vor::ReadProcessTable(table)) return 1;
  vor::AppendChildrenInOnePass(table, pids);
  return 0;
}

int TAProcess::ZombiClean() {
  signal(SIGCHLD, SIG_IGN);
  waitpid(-1, nullptr, WNOHANG);
  return 0;
}

int TAProcess::Getpid() {
  return getpid();
}
