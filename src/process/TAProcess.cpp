#include "process/TAProcess.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "base/VorListValVorString.h"
#include "foundation/Tracing.h"
#include "process/ChildStart.h"
#include "process/ProcessTable.h"
#include "process/ProcessTree.h"
#include "process/ShellCall.h"

namespace {

// What system() gives when kill finds no such process: exit code 1.
constexpr int kNothingKilled = 256;

// exec takes 131,072 bytes in one argument, and the shell gets a command as one.
constexpr std::size_t kLongestCommand = 130000;

int Fold(int rawStatus) {
  const unsigned raw = static_cast<unsigned>(rawStatus);
  return static_cast<int>(raw < 256 ? raw : raw >> 8);
}

pid_t WaitFor(pid_t pid, int& rawStatus, int flags) {
  pid_t ended;
  do {
    ended = waitpid(pid, &rawStatus, flags);
  } while (ended < 0 && errno == EINTR);
  return ended;
}

bool Exists(int pid) {
  return kill(pid, 0) == 0;
}

// 0 if the process got the signal or has gone, 1 with a message if it could not be sent.
int SendSignal(int pid, int hard) {
  if (!Exists(pid) || kill(pid, hard != 0 ? SIGKILL : SIGTERM) == 0) return 0;
  printf("Error unable to kill process\n");
  return 1;
}

// The child, then its descendants; the child alone where the process table cannot be read.
std::vector<int> ReadTree(int root) {
  vor::ProcessTable table;
  vor::ReadProcessTable(table);
  return vor::FindTree(root, table);
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
  _pid = vor::StartChild(command, _output, _input);
  _collected = false;
  _isOwn = true;
  if (_pid > 0) return 0;
  _pid = 0;
  _errMsg = "Unable to fork process";
  return 1;
}

int TAProcess::Check(int& status) {
  status = 0;
  if (!HasChild()) return -1;
  int rawStatus = 0;
  const int ended = WaitFor(_pid, rawStatus, WNOHANG);
  status = Fold(rawStatus);
  _collected = HasGone(ended);
  return ended;
}

int TAProcess::Wait(int& status) {
  status = 0;
  if (!HasChild()) return 0;
  int rawStatus = 0;
  _collected = HasGone(WaitFor(_pid, rawStatus, 0));
  status = Fold(rawStatus);
  return 0;
}

// A child of its own that is not there was collected elsewhere, by the system for instance.
bool TAProcess::HasGone(int waited) const {
  return waited == _pid || (waited < 0 && _isOwn && errno == ECHILD);
}

int TAProcess::Exec(const VorString& command) {
  const int result = vor::RunInShell(command);
  return result < 257 ? result : result / 256;
}

int TAProcess::Kill() {
  if (!HasChild()) return kNothingKilled;
  return vor::RunInShell("kill -9 " + toString(_pid) + "> /dev/null 2>&1");
}

int TAProcess::KillWithSig(int hard) {
  return HasChild() ? SendSignal(_pid, hard) : 0;
}

int TAProcess::KillTree() noexcept {
  if (!HasChild()) return kNothingKilled;
  int result = 0;
  for (const std::string& command : vor::KillCommands(ReadTree(_pid), kLongestCommand)) {
    const int one = vor::RunInShell(command.c_str());
    if (result == 0) result = one;
  }
  return result;
}

int TAProcess::KillTreeWithSig(int hard) noexcept {
  if (!HasChild()) return 0;
  const std::vector<int> tree = ReadTree(_pid);
  for (auto pid = tree.rbegin(); pid != tree.rend(); ++pid) SendSignal(*pid, hard);
  return 0;
}

int TAProcess::GetProcessTree(VorListValVorString& pids) const noexcept {
  if (_pid <= 0) return -1;
  if (pids.Size() == 0) {
    pids.Append(toString(_pid));
    if (_collected) return 0;  // its identifier may be a stranger's, and its children have left it
  }
  vor::ProcessTable table;
  if (!vor::ReadProcessTable(table)) return 1;
  vor::AppendChildrenInOnePass(table, pids);
  return 0;
}

int TAProcess::ZombiClean() {
  signal(SIGCHLD, SIG_IGN);
  int rawStatus;
  WaitFor(-1, rawStatus, WNOHANG);
  return 0;
}

int TAProcess::Getpid() {
  return getpid();
}
