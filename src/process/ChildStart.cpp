#include "process/ChildStart.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <paths.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "process/CommandLine.h"
#include "process/ShellCall.h"

// A child is started with vfork: it runs in the memory of its parent, whose calling thread stands
// still, until it has its new program.  So the start costs the same however large the parent is,
// and three rules hold for all code that the child runs.
//
// - It allocates nothing and takes no lock: other threads of the parent may hold one.  Everything
//   is prepared in a ChildPlan before the split.
// - No handler of the parent may run in the child, where it would change the parent's memory: all
//   signals are blocked over the split, and the child drops the handlers before it lifts the block.
// - It ends in exec or _Exit: the parent's buffered output and destructors are not the child's.

namespace vor {
namespace {

constexpr char kNoMemory[] = "Unable to alloc memory\n";
constexpr char kShell[] = _PATH_BSHELL;
constexpr char kStandardPath[] = "/bin:/usr/bin";  // searched when PATH is not set
constexpr int kNotStarted = 1;                     // exit code of a child without a program

bool IsNamedPipe(const char* path) {
  struct stat info;
  return *path != '\0' && stat(path, &info) == 0 && S_ISFIFO(info.st_mode);
}

// What exec is to try for \a program one after another, each path with its NUL.
std::string PathsOf(std::string_view program) {
  std::string paths;
  if (program.find('/') != std::string_view::npos) return paths.append(program) + '\0';
  const char* searched = getenv("PATH");
  std::string_view folders = searched == nullptr ? kStandardPath : searched;
  for (;;) {
    const std::size_t end = folders.find(':');
    const std::string_view folder = folders.substr(0, end);
    if (folder.size() < PATH_MAX) {  // a longer one cannot be, and the search goes on
      paths += folder;
      if (!folder.empty()) paths += '/';  // an empty entry is the working directory
      paths.append(program) += '\0';
    }
    if (end == std::string_view::npos) return paths;
    folders.remove_prefix(end + 1);
  }
}

// All that a child needs until it has its new program.
class ChildPlan {
 public:
  ChildPlan(const VorString& command, const VorString& output, const VorString& input);

  // Opening a named pipe waits for its other end, which may be opened by this very process as soon
  // as the start returns.
  bool MayWaitForParent() const { return IsNamedPipe(_output) || IsNamedPipe(_input); }

  // Becomes the program.  Called in the child; returns if there is no such program.
  void Run();

 private:
  void Redirect() const;
  void Execute(char* path);

  std::vector<std::string> _arguments;
  std::string _paths;         // to try, each ended by a NUL
  std::vector<char*> _shell;  // the shell, then the arguments with the program first, then null
  const char* _output;
  const char* _input;
};

ChildPlan::ChildPlan(const VorString& command, const VorString& output, const VorString& input)
    : _arguments(ParseCommandLine(command)), _output(output), _input(input) {
  if (_arguments.empty()) return;
  _paths = PathsOf(_arguments.front().c_str());  // up to a NUL, as exec
  _shell.reserve(_arguments.size() + 2);
  _shell.push_back(const_cast<char*>(kShell));
  for (std::string& argument : _arguments) _shell.push_back(argument.data());
  _shell.push_back(nullptr);
}

// Descriptors 0 to 2 may be closed in the parent, so a file may be opened as the very one that it
// is meant for.
void ChildPlan::Redirect() const {
  const int flags = O_WRONLY | O_CREAT | O_TRUNC;
  const int out = *_output == '\0' ? -1 : open(_output, flags, 0666);
  if (out >= 0) {
    if (out != STDOUT_FILENO) dup2(out, STDOUT_FILENO);
    if (out != STDERR_FILENO) dup2(out, STDERR_FILENO);
    if (out != STDOUT_FILENO && out != STDERR_FILENO) close(out);
  }
  const int in = *_input == '\0' ? -1 : open(_input, O_RDONLY);
  if (in > STDIN_FILENO) {
    dup2(in, STDIN_FILENO);
    close(in);
  }
}

// Returns with errno set if \a path cannot be run.  A file that is no program of the system is a
// script for the shell.
void ChildPlan::Execute(char* path) {
  execve(path, _shell.data() + 1, environ);
  if (errno != ENOEXEC) return;
  char* const program = _shell[1];
  _shell[1] = path;
  execve(kShell, _shell.data(), environ);
  _shell[1] = program;
}

void ChildPlan::Run() {
  Redirect();
  char* const end = _paths.data() + _paths.size();
  for (char* path = _paths.data(); path < end; path += strlen(path) + 1) {
    Execute(path);
    switch (errno) {
      case EACCES:
      case ENOENT:
      case ENOTDIR:
      case ENODEV:
      case ESTALE:
      case ETIMEDOUT:
        break;  // another folder may have it
      default:
        return;
    }
  }
}

// Keeps signals and cancellation away from the calling thread while it shares its memory with a
// child.
class UndisturbedScope {
 public:
  UndisturbedScope() {
    sigset_t all;
    sigfillset(&all);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &_cancelState);
    pthread_sigmask(SIG_SETMASK, &all, &_mask);
  }
  UndisturbedScope(const UndisturbedScope&) = delete;
  UndisturbedScope& operator=(const UndisturbedScope&) = delete;
  ~UndisturbedScope() {
    pthread_sigmask(SIG_SETMASK, &_mask, nullptr);
    pthread_setcancelstate(_cancelState, nullptr);
  }

  const sigset_t& Mask() const { return _mask; }

 private:
  sigset_t _mask;
  int _cancelState = PTHREAD_CANCEL_ENABLE;
};

// What a child restores before it becomes its program.
struct SignalState {
  const sigset_t& mask;     // of the parent's calling thread
  const sigset_t& ignored;  // by this library, beside SIGPIPE and SIGCHLD
};

// In the child: defaults in place of the parent's handlers, and of what this library may have made
// the parent ignore; then the parent's mask.
void RestoreSignals(const SignalState& state) {
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action = {};
    const bool ours =
        number == SIGPIPE || number == SIGCHLD || sigismember(&state.ignored, number) == 1;
    if (!ours && sigaction(number, nullptr, &action) != 0) continue;
    const bool handled = action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
    if (ours || handled) sigaction(number, &standard, nullptr);
  }
  sigprocmask(SIG_SETMASK, &state.mask, nullptr);
}

[[noreturn]] void RunChild(ChildPlan* plan, const SignalState& signals) {
  RestoreSignals(signals);
  if (plan != nullptr) {
    plan->Run();
  } else {
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, kNoMemory, strlen(kNoMemory));
  }
  _Exit(kNotStarted);
}

// A function of its own, which changes no variable after the split: the child uses the same stack.
[[gnu::noinline]] pid_t SplitProcess(ChildPlan* plan, bool shareMemory,
                                     const SignalState& signals) {
  const pid_t pid = shareMemory ? vfork() : fork();
  if (pid == 0) RunChild(plan, signals);
  return pid;
}

}  // namespace

pid_t StartChild(const VorString& command, const VorString& output, const VorString& input) {
  std::optional<ChildPlan> plan;
  try {
    plan.emplace(command, output, input);
  } catch (const std::bad_alloc&) {
    plan.reset();  // the child tells, as a program that cannot be started does
  }
  const bool shareMemory = !plan.has_value() || !plan->MayWaitForParent();
  const UndisturbedScope undisturbed;
  const ShellCallScope shellCalls;
  return SplitProcess(plan.has_value() ? &*plan : nullptr, shareMemory,
                      {undisturbed.Mask(), shellCalls.IgnoredForShell()});
}

}  // namespace vor
