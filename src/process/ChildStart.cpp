#include "process/ChildStart.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <paths.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "process/ReserveDescriptors.h"
#include "process/ShellCall.h"
#include "process/UndisturbedScope.h"

// A child is started with vfork: it runs in the memory of its parent, and the calling thread of the
// parent is suspended, until the child has called exec.  So the start costs the same however large
// the parent is, and three rules hold for all code that the child runs.
//
// - It allocates nothing and takes no lock: other threads of the parent may hold one.  Everything
//   is prepared in a ChildPlan before the fork.
// - No handler of the parent must run in the child, where it would change the parent's memory: all
//   signals are blocked during the fork, and the child resets the handlers before it unblocks the
//   signals.
// - It ends in exec or _Exit: the parent's buffered output and destructors are not the child's.
//
// A failed exec stores its errno in a word that the parent reads.  Emulators and sanitizers can
// prevent vfork from sharing memory, so the word is in a shared page until vfork was seen to share
// it.
//
// Opening a named pipe waits for its other end, which this process may open only after the start
// has returned.  A child with such a pipe is therefore started with fork, and the word is in a
// shared page.

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

// The paths that exec tries for \a program, in order, each with its NUL.
std::string PathsOf(std::string_view program) {
  std::string paths;
  if (program.find('/') != std::string_view::npos) return paths.append(program) + '\0';
  const char* searched = getenv("PATH");
  std::string_view directories = searched == nullptr ? kStandardPath : searched;
  for (;;) {
    const std::size_t end = directories.find(':');
    const std::string_view directory = directories.substr(0, end);
    if (directory.size() < PATH_MAX) {  // a longer one cannot exist; the search goes on
      paths += directory;
      if (!directory.empty()) paths += '/';  // an empty entry is the working directory
      paths.append(program) += '\0';
    }
    if (end == std::string_view::npos) return paths;
    directories.remove_prefix(end + 1);
  }
}

// Everything that a child needs until its exec.
class ChildPlan {
 public:
  explicit ChildPlan(ChildRequest& request);

  bool MayWaitForParent() const { return IsNamedPipe(_output) || IsNamedPipe(_input); }

  // Enters the container.  Called in the child, before anything else that it does.
  void Enter() const { _entry.Apply(); }

  // Becomes the program.  Called in the child; returns errno if that fails.
  int Run();

 private:
  void Redirect() const;
  void Execute(char* path);

  std::vector<std::string> _arguments;
  std::string _paths;         // to try, each ended by a NUL
  std::vector<char*> _shell;  // the shell, then the arguments with the program first, then null
  const char* _output;
  const char* _input;
  const Container::Entry _entry;
};

ChildPlan::ChildPlan(ChildRequest& request)
    : _arguments(std::move(request.arguments)),
      _output(request.settings.output.c_str()),
      _input(request.settings.input.c_str()),
      _entry(request.entry) {
  if (_arguments.empty()) return;
  _paths = PathsOf(_arguments.front().c_str());  // up to a NUL, as exec
  _shell.reserve(_arguments.size() + 2);
  _shell.push_back(const_cast<char*>(kShell));
  for (std::string& argument : _arguments) _shell.push_back(argument.data());
  _shell.push_back(nullptr);
}

// open() for a child before its exec.  If no descriptor is free, it closes one that the exec would
// close anyway; the child has its own table of descriptors.
int OpenInChild(const char* path, int flags) {
  const int fd = open(path, flags, 0666);
  if (fd >= 0 || errno != EMFILE) return fd;
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  for (int other = STDERR_FILENO + 1; static_cast<rlim_t>(other) < limit.rlim_cur; ++other) {
    const int closeOnExec = fcntl(other, F_GETFD);
    if (closeOnExec < 0 || (closeOnExec & FD_CLOEXEC) == 0) continue;
    close(other);
    return open(path, flags, 0666);
  }
  return -1;
}

// Descriptors 0 to 2 may be closed in the parent, so a file may be opened as the very one that it
// is meant for.
void ChildPlan::Redirect() const {
  const int flags = O_WRONLY | O_CREAT | O_TRUNC;
  const int out = *_output == '\0' ? -1 : OpenInChild(_output, flags);
  if (out >= 0) {
    if (out != STDOUT_FILENO) dup2(out, STDOUT_FILENO);
    if (out != STDERR_FILENO) dup2(out, STDERR_FILENO);
    if (out != STDOUT_FILENO && out != STDERR_FILENO) close(out);
  }
  const int in = *_input == '\0' ? -1 : OpenInChild(_input, O_RDONLY);
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

// If a program was found that must not be run, that is the reason of the failure, even if the
// search continues.  A directory of PATH that must not be searched is not.
int ChildPlan::Run() {
  Redirect();
  int error = ENOENT;
  struct stat info;
  char* const end = _paths.data() + _paths.size();
  const bool isOnly = strlen(_paths.c_str()) + 1 == _paths.size();
  for (char* path = _paths.data(); path < end; path += strlen(path) + 1) {
    Execute(path);
    switch (errno) {
      case EACCES:
        if (isOnly || stat(path, &info) == 0) error = EACCES;
        break;
      case ENOENT:
      case ENOTDIR:
      case ENODEV:
      case ESTALE:
      case ETIMEDOUT:
        break;  // another directory may have it
      default:
        return errno;
    }
  }
  return error;
}

// The word for the errno of an exec in a process that does not share its memory; null without
// memory.
std::shared_ptr<int> SharedWord() {
  const int access = PROT_READ | PROT_WRITE;
  void* const page = mmap(nullptr, sizeof(int), access, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) return nullptr;
  return std::shared_ptr<int>(static_cast<int*>(page),
                              [](int* word) { munmap(word, sizeof *word); });
}

// The state that a child restores before it executes its program.
struct SignalState {
  const sigset_t& mask;  // of the parent's calling thread
  const ShellCallWatch& shellCalls;
};

// In the child: defaults in place of the parent's handlers, and of what this library may have made
// the parent ignore; then the parent's mask.
void RestoreSignals(const SignalState& state) {
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action = {};
    const bool ours =
        number == SIGPIPE || number == SIGCHLD || state.shellCalls.IsIgnoredForShell(number);
    if (!ours && sigaction(number, nullptr, &action) != 0) continue;
    const bool handled = action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
    if (ours || handled) sigaction(number, &standard, nullptr);
  }
  sigprocmask(SIG_SETMASK, &state.mask, nullptr);
}

// The words in which a child reports to its parent.
struct ChildReport {
  volatile bool* hasRun;  // set at once, seen by the parent if they share memory
  volatile int* error;    // errno of a failed exec
};

[[noreturn]] void RunChild(ChildPlan* plan, const SignalState& signals, const ChildReport& report) {
  *report.hasRun = true;
  RestoreSignals(signals);
  if (plan != nullptr) {
    plan->Enter();
    *report.error = plan->Run();
  } else {
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, kNoMemory, strlen(kNoMemory));
    *report.error = ENOMEM;
  }
  _Exit(kNotStarted);
}

// A function of its own, which changes no variable after the fork: the child uses the same stack.
[[gnu::noinline]] pid_t ForkChild(ChildPlan* plan, bool shareMemory, const SignalState& signals,
                                  const ChildReport& report) {
  const pid_t pid = shareMemory ? vfork() : fork();
  if (pid == 0) RunChild(plan, signals, report);
  return pid;
}

// Set once a child of vfork was seen to share the memory.
constinit std::atomic<bool> vforkShares = false;

}  // namespace

StartedChild StartChild(ChildRequest request) {
  std::optional<ChildPlan> plan;
  std::shared_ptr<int> sharedWord;
  bool shareMemory = true;
  try {
    plan.emplace(request);
    shareMemory = !plan->MayWaitForParent();
    if (!shareMemory || !vforkShares) sharedWord = SharedWord();
  } catch (const std::bad_alloc&) {
    plan.reset();  // the child reports it, as a program that cannot be started does
    shareMemory = true;
  }
  KeepDescriptorsInReserve();
  StartedChild child;
  volatile bool hasRun = false;
  volatile int word = 0;
  volatile int* const error = sharedWord != nullptr ? sharedWord.get() : &word;
  {
    const UndisturbedScope undisturbed;
    const ShellCallWatch shellCalls;
    child.pid = ForkChild(plan.has_value() ? &*plan : nullptr, shareMemory,
                          {undisturbed.Mask(), shellCalls}, {&hasRun, error});
    if (child.pid < 0) child.error = errno;
  }
  if (child.pid > 0 && hasRun) {
    vforkShares = true;
    child.error = *error;
  } else if (child.pid > 0) {
    child.lateError = std::move(sharedWord);
  }
  return child;
}

}  // namespace vor
