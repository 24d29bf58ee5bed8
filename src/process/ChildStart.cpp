#include "process/ChildStart.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "base/PosixFile.h"
#include "process/ChildPlan.h"
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
// A step that fails is reported in a word that the parent reads.  Emulators and sanitizers can
// prevent vfork from sharing memory and from suspending the parent.  So until vfork was seen to
// share memory, the word is in a shared page, and the parent waits for the exec at a pipe.
//
// Opening a named pipe waits for its other end, which this process may open only after the start
// has returned.  A child with such a pipe is therefore started with fork and not waited for.

namespace vor {
namespace {

constexpr char kNoMemory[] = "Unable to alloc memory\n";
constexpr int kNotStarted = 1;  // exit code of a child without a program

// The report of a child whose memory may not be that of this process.
class SharedReport : public LateFailure {
 public:
  explicit SharedReport(const ChildSettings& settings) : _settings(settings) {
    const int access = PROT_READ | PROT_WRITE;
    _page = mmap(nullptr, sizeof(ChildPlan::Failure), access, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (_page == MAP_FAILED) throw std::bad_alloc();
    new (_page) ChildPlan::Failure();
  }
  SharedReport(const SharedReport&) = delete;
  SharedReport& operator=(const SharedReport&) = delete;
  ~SharedReport() override {
    if (_page != MAP_FAILED) munmap(_page, sizeof(ChildPlan::Failure));
  }

  volatile ChildPlan::Failure* Word() { return static_cast<ChildPlan::Failure*>(_page); }

  StartFailure Get() const override {
    return Named(*static_cast<const ChildPlan::Failure*>(_page), _settings);
  }

  static StartFailure Named(const ChildPlan::Failure& failure, const ChildSettings& settings) {
    if (failure.error == 0) return {};
    return {failure.error, ChildPlan::NameOf(failure.step, settings)};
  }

 private:
  const ChildSettings _settings;
  void* _page;
};

// A pipe whose writing end the exec or the end of a child closes.  Without a free descriptor it
// does not wait.
class ExecNotice {
 public:
  ExecNotice() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    _reader.Reset(AboveStandard(ends[0]));
    _writer.Reset(AboveStandard(ends[1]));
  }

  void Wait() {
    _writer.Reset(-1);
    char none;
    if (_reader.IsOpen()) ReadSome(_reader.Get(), &none, 1);
  }

 private:
  FileDescriptor _reader;
  FileDescriptor _writer;
};

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
  volatile ChildPlan::Failure* failure;

  void Set(const ChildPlan::Failure& failed) const {
    failure->step = failed.step;
    failure->error = failed.error;
  }
};

[[noreturn]] void RunChild(ChildPlan* plan, const SignalState& signals, const ChildReport& report) {
  *report.hasRun = true;
  RestoreSignals(signals);
  if (plan != nullptr) {
    report.Set(plan->Run());
  } else {
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, kNoMemory, strlen(kNoMemory));
    report.Set({ENOMEM, ChildPlan::kExec});
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
  std::shared_ptr<SharedReport> shared;
  std::optional<ExecNotice> notice;
  bool shareMemory = true;
  try {
    plan.emplace(request);
    shareMemory = !plan->MayWaitForParent();
    if (!shareMemory || !vforkShares) shared = std::make_shared<SharedReport>(request.settings);
    if (shareMemory && !vforkShares) notice.emplace();
  } catch (const std::bad_alloc&) {
    plan.reset();  // the child reports it, as a program that cannot be started does
    shareMemory = true;
  }
  KeepDescriptorsInReserve();
  StartedChild child;
  volatile bool hasRun = false;
  volatile ChildPlan::Failure word;
  volatile ChildPlan::Failure* const failure = shared != nullptr ? shared->Word() : &word;
  {
    const UndisturbedScope undisturbed;
    const ShellCallWatch shellCalls;
    child.pid = ForkChild(plan.has_value() ? &*plan : nullptr, shareMemory,
                          {undisturbed.Mask(), shellCalls}, {&hasRun, failure});
    if (child.pid < 0) child.failure.error = errno;
  }
  if (child.pid < 0) return child;
  if (hasRun) {
    vforkShares = true;
  } else {
    if (notice.has_value()) notice->Wait();
    child.late = std::move(shared);
  }
  child.failure = SharedReport::Named({failure->error, failure->step}, request.settings);
  return child;
}

}  // namespace vor
