#include "process/TAProcess.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/VorListValVorString.h"
#include "foundation/Tracing.h"
#include "process/ChildPlan.h"
#include "process/ChildStart.h"
#include "process/ChildWatch.h"
#include "process/CommandLine.h"
#include "process/Container.h"
#include "process/OutputPipe.h"
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

// Between checks of a child for a stop, which does not end a wait as its end does.
constexpr int kLongestWaitMs = 1000;

// For the end of a child that was killed: one that waits for a device may take long.
constexpr int kMsForKilled = 10'000;

int Fold(int rawStatus) {
  const unsigned raw = static_cast<unsigned>(rawStatus);
  return static_cast<int>(raw < 256 ? raw : raw >> 8);
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

TAProcessEnd EndFrom(int rawStatus, const rusage& usage) {
  TAProcessEnd end;
  const bool isSignal = WIFSIGNALED(rawStatus);
  end.kind = isSignal ? TAProcessEnd::Signalled : TAProcessEnd::Exited;
  end.code = isSignal ? WTERMSIG(rawStatus) : WEXITSTATUS(rawStatus);
  end.coreDumped = isSignal && WCOREDUMP(rawStatus);
  end.userSeconds = Seconds(usage.ru_utime);
  end.systemSeconds = Seconds(usage.ru_stime);
  end.peakMemoryKiB = usage.ru_maxrss;
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

TAProcessEnd NotStartedFor(const vor::StartFailure& failure) {
  TAProcessEnd end;
  end.kind = TAProcessEnd::NotStarted;
  end.code = failure.error;
  end.object = failure.object;
  return end;
}

std::string MessageFor(const std::string& program, const vor::StartFailure& failure) {
  const std::string object = failure.object.empty() ? "" : failure.object + ": ";
  return "Unable to start " + (program.empty() ? "a command" : program) + ": " + object +
         std::generic_category().message(failure.error);
}

std::string NameOf(const vor::ChildRequest& request) {
  return request.arguments.empty() ? "" : request.arguments.front();
}

std::vector<std::string> TextsOf(const VorListValVorString& list) {
  std::vector<std::string> texts;
  texts.reserve(static_cast<std::size_t>(list.Size()));
  for (int position = 1; position <= list.Size(); ++position) {
    texts.emplace_back(list[position].View());
  }
  return texts;
}

// The moment \a limitMs milliseconds from now.
class Deadline {
 public:
  explicit Deadline(int limitMs) : _end(Clock::now() + std::chrono::milliseconds(limitMs)) {}

  // In milliseconds, at most \a most; 0 if it is over.
  int Left(int most) const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(_end - Clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 0, most));
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point _end;
};

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

// wait4 for an end.
pid_t WaitFor(pid_t pid, int& rawStatus, int flags, rusage& usage) {
  for (;;) {
    rawStatus = 0;
    const pid_t ended = wait4(pid, &rawStatus, flags, &usage);
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
  Launch({vor::ParseCommandLine(command), settings});
  if (_pid > 0) return 0;
  _errMsg = "Unable to fork process";
  return 1;
}

int TAProcess::Start(const VorString& command, const TAProcessOptions& options) noexcept {
  return StartChecked({vor::ParseCommandLine(command), options.Settings()});
}

int TAProcess::Start(const VorListValVorString& arguments,
                     const TAProcessOptions& options) noexcept {
  return StartChecked({TextsOf(arguments), options.Settings()});
}

// Makes a child the last one.
vor::StartFailure TAProcess::Launch(vor::ChildRequest&& request) {
  MakeContainer();
  request.entry = EntryOf(_container.get());
  vor::StartedChild child = vor::StartChild(std::move(request));
  NoteStart(std::max(child.pid, 0), child.failure);
  _late = std::move(child.late);
  return std::move(child.failure);
}

// \a pid: 0 for none.
void TAProcess::NoteStart(int pid, const vor::StartFailure& failure) {
  _pid = pid;
  if (_container != nullptr) _container->NoteStart(_pid);
  _reaped = false;
  _isOwn = true;
  _late.reset();
  _end = TAProcessEnd();
  if (failure.error != 0) _end = NotStartedFor(failure);
  _startNs = NanosecondsSinceBoot();
}

// Start with options.
int TAProcess::StartChecked(vor::ChildRequest&& request) {
  const std::string program = NameOf(request);
  vor::StartFailure failure = vor::FindFault(request);
  if (failure.error == 0) {
    failure = Launch(std::move(request));
    if (failure.error == 0) {
      _errMsg = "no error";
      return 0;
    }
    int rawStatus;
    rusage usage;
    if (HasChild()) WaitFor(_pid, rawStatus, 0, usage);  // it ends at once
  }
  return Refuse(program, failure);
}

// There is no child now.  Returns 1.
int TAProcess::Refuse(const std::string& program, const vor::StartFailure& failure) {
  _container.reset();
  NoteStart(0, failure);
  _errMsg = MessageFor(program, failure);
  return 1;
}

int TAProcess::Run(const VorListValVorString& arguments, const TAProcessOptions& options,
                   VorString& output, TAProcessEnd& end, int limitMs,
                   std::size_t maxBytes) noexcept {
  vor::ChildRequest request = {TextsOf(arguments), options.Settings()};
  vor::OutputPipe pipe(maxBytes);
  const int error = pipe.Open();
  request.outputPipe = pipe.Writer();
  int result = error == 0 ? StartChecked(std::move(request))
                          : Refuse(NameOf(request), {error, "pipe for the output"});
  pipe.CloseWriter();
  const bool hasStarted = result == 0;
  const bool isOver = hasStarted && Collect(pipe, limitMs);
  end = GetEnd();
  if (end.kind == TAProcessEnd::NotStarted) result = 1;
  if (hasStarted && !pipe.IsComplete()) result = 2;
  if (isOver) {
    end.kind = TAProcessEnd::TimedOut;
    end.code = 0;
    end.coreDumped = false;
    _end = end;
  }
  output = VorString(pipe.Take());
  return result;
}

// Reads the output of the child until it ends or has run for \a limitMs milliseconds, unless that
// is 0, and is killed.  Returns whether it was.
bool TAProcess::Collect(vor::OutputPipe& pipe, int limitMs) {
  const Deadline deadline(limitMs);
  const vor::FileDescriptor process = vor::OpenProcess(_pid);
  int status;
  while (Check(status) == 0) {
    const int left = limitMs > 0 ? deadline.Left(kLongestWaitMs) : kLongestWaitMs;
    if (left == 0) {
      KillTree();
      Wait(status, kMsForKilled);
      pipe.Drain();
      return true;
    }
    pipe.Collect(process, left);
  }
  pipe.Drain();
  return false;
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

// A program that asks to be traced may stop, which is no end, but must be noticed.
int TAProcess::Wait(int& status, int limitMs) noexcept {
  if (limitMs < 0) return Wait(status);
  const Deadline deadline(limitMs);
  vor::ChildWatch watch;
  watch.Insert(0, _pid);
  while (Check(status) == 0) {
    const int left = deadline.Left(kLongestWaitMs);
    if (left == 0) return 1;
    watch.WaitForEnd(left);
  }
  return 0;
}

// wait4, which notes an end.  An own child that is not there was reaped elsewhere, by the system
// for instance.
int TAProcess::Reap(int& status, int flags) {
  int rawStatus;
  rusage usage = {};
  const int left = KillLeft(flags);
  const int ended = WaitFor(_pid, rawStatus, flags, usage);
  status = Fold(rawStatus);
  if (ended == _pid) NoteEnd(EndFrom(rawStatus, usage));
  if (ended < 0 && _isOwn && errno == ECHILD) NoteEnd(LostEnd());
  if (ended != 0) _end.leftBehind = left;
  return ended;
}

// Like Check, but does not reap.
bool TAProcess::HasEnded() {
  return !HasChild() || WaitForUnreaped(_pid, WNOHANG);
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
  if (_late != nullptr) {
    const vor::StartFailure failure = _late->Get();
    if (failure.error != 0) _end = NotStartedFor(failure);
    _late.reset();
  }
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
  if (HasChild() && _isOwn && !vor::IsChild(_pid)) {
    const int left = KillLeft(WNOHANG);
    NoteEnd(LostEnd());
    _end.leftBehind = left;
  }
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
  if (tree.Processes().empty()) return kNothingKilled;
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
