#ifndef VOR_PROCESS_TAPROCESSLIST_H
#define VOR_PROCESS_TAPROCESSLIST_H

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

#include "../base/Export.h"
#include "../base/VorString.h"
#include "TAContainment.h"
#include "TAProcessEnd.h"

class TAProcessOptions;
class VorListValVorString;
struct processInfo;
namespace vor {
class ChildWatch;
class WakeEvent;
}  // namespace vor

/// A queue of commands that run as child processes, a limited number at a time.  Each may have a
/// time limit.
///
/// Call Start for every command, then
///
///     while (list.NDone() < list.Size()) {
///       list.Check();
///       list.WaitForChange(-1);
///     }
///
/// and read each result by its position, 1-based in the order of Start.  Nothing happens between
/// two calls: there is no thread and no signal handler.  More commands may be added at any time.  A
/// command goes from waiting to running to done, never back.
///
/// Ownership: keeps copies of its arguments.  The destructor neither kills nor waits for children
///            that still run; they go on, and stay in the process table when they end.  It waits up
///            to 0.1 seconds for those that were killed.
/// Errors:    GetEnd reports them; return codes cannot distinguish all ends.  A return code is also
///            0 if the command was reaped elsewhere, and without options if the fork failed.  After
///            TAProcess::ZombiClean, which a TAThread clean-up calls, or with SIGCHLD ignored from
///            the start, the system reaps all of them, so every command "passes".  A position
///            outside the list is a bug of the caller: a message on standard error, then abort.
/// Threads:   a list belongs to one thread at a time, except for Wake.
class VOR_API TAProcessList {
 public:
  /// The states of a command, as GetStatus returns them.
  enum Status : int { Waiting = 0, Running = 1, Done = 2 };

  /// The return codes of commands with these kinds of end.
  static constexpr int TimedOut = 99;
  static constexpr int Cancelled = 98;

  /// Which of the waiting commands starts next.
  enum Order : int { LastAddedFirst, FirstAddedFirst };

  /// At most 10 commands run at once.
  TAProcessList();
  /// At most \a maxRunning commands run at once; with 0 or less none ever starts, and the loop
  /// above never ends.
  explicit TAProcessList(int maxRunning);
  TAProcessList(const TAProcessList&) = delete;
  TAProcessList& operator=(const TAProcessList&) = delete;
  ~TAProcessList();

  /// Queues \a command (see TAProcess::Start), which may run for \a timeout seconds; 0 for no
  /// limit.  Returns its position.
  int Start(const VorString& command, int timeout) noexcept;
  /// The same, with standard output and standard error sent to the file \a output (see
  /// TAProcess::SetOutput: a file that cannot be opened is ignored).
  int Start(const VorString& command, int timeout, const VorString& output) noexcept;

  /// Queues \a command with \a options, which may run for \a limitMs milliseconds; 0 or less for no
  /// limit.  Returns its position.  Unlike seconds, milliseconds are exact: they follow the steady
  /// clock (CLOCK_MONOTONIC), which nobody sets and which stands still while the system sleeps.
  ///
  /// A command that cannot be started as the options say is done at the Check after the one that
  /// tries, with the kind of end NotStarted and the return code 1.
  int Start(const VorString& command, const TAProcessOptions& options, int limitMs) noexcept;
  /// The same for a program and its arguments, which are passed as they are.
  int Start(const VorListValVorString& arguments, const TAProcessOptions& options,
            int limitMs) noexcept;

  /// LastAddedFirst by default.
  void SetOrder(Order order);

  /// Starts no further command while the load average of the last minute is above \a load, except
  /// that one may always run; 0 or less, the default, for no such limit.  The system updates the
  /// average every few seconds, so it does not hold back commands that start at once.
  void SetMaxLoad(double load);

  /// Selects how commands that reach their time limit or are cancelled end: 0, the default, kills
  /// them at once.  Otherwise their processes get SIGTERM first, and what is left of them after
  /// \a milliseconds is killed.  Until then, or until all of them have ended, they count as
  /// running.  Stopped processes are continued, so that they can act.
  void SetGrace(int milliseconds);

  /// For all commands that start from now on, also those that wait already; see TAProcess.
  void SetContainment(TAContainment containment);
  void SetLeavesNobody(bool leavesNobody);
  const char* ContainmentInUse() const;

  /// Cancels one command, or all that are not done.  A waiting one never starts and is done; a
  /// running one is killed, see SetGrace.  One that has ended or reached its time limit keeps that
  /// kind of end.  A command whose grace time runs already is left alone, unless SetGrace(0)
  /// was called since: then it is killed now.
  void Cancel(int position) noexcept;
  void CancelAll() noexcept;

  /// One step: notices the commands that have ended, kills those that have reached their time
  /// limit (see SetGrace) as TAProcess::KillTree does, and starts waiting ones up to the limit.
  /// Returns 1 if the state of a command has changed, also by a cancellation since, else 0.
  ///
  /// Callers rely on the order: the command added last starts first, unless SetOrder was called.  A
  /// time limit in seconds takes effect at the first Check after the second of the clock in which
  /// the limit ends.  The cost grows with the commands that run, not with those that wait or are
  /// done.  After a kill, Check, Cancel and CancelAll wait up to 0.1 seconds for the end, so that
  /// GetEnd includes what the command has used; if it takes longer, a later Check adds that.
  int Check() noexcept;

  /// Blocks until Check has something to do: a running command has ended or reached its time limit,
  /// or a waiting one may start.  Returns 1 then, 0 after \a limitMs milliseconds, without limit if
  /// that is less than 0.  Also returns 0 when a signal with a handler arrives, at once after Wake,
  /// and at once if no command runs and none may start.
  ///
  /// The wait wakes up once a second as long as the running commands of all lists are at most a
  /// quarter of the soft limit of descriptors (RLIMIT_NOFILE), since each then has a descriptor
  /// here.  Those beyond that are checked at intervals of 10 to 100 ms, which costs some
  /// processor time and notices their ends later; a higher limit avoids it.
  int WaitForChange(int limitMs) noexcept;

  /// Makes the present or else the next WaitForChange return 0.  May be called by any thread and in
  /// a signal handler.
  void Wake() noexcept;

  int NWaiting() const;
  int NRunning() const;
  int NDone() const;
  int Size() const;

  /// The folded status (see TAProcess) of a command that is done, or TimedOut or Cancelled, which
  /// are also exit codes that a command may have; 0 before.
  int GetReturnCode(int position) const;

  /// Waiting, Running or Done; Done also if the command was killed or could not be started.
  int GetStatus(int position) const;

  /// The process identifier of the command; 0 if it has not been started.  Once it is done the
  /// system may have given the number to another process.
  int GetPid(int position) const;

  /// How the command ended; NotEnded while it waits or runs.
  TAProcessEnd GetEnd(int position) const;

 private:
  int Add(std::unique_ptr<processInfo> entry);
  bool NoticeEnds();
  bool HasEnded(std::size_t index);
  bool StopOverdue();
  bool Stop(std::size_t index, TAProcessEnd::Kind reason);
  bool CancelRunning(std::size_t index);
  void CancelWaiting(int position);
  void Kill(std::size_t index);
  void AwaitKilled();
  void ReapKilled();
  bool MayLaunch() const;
  void LaunchNext();
  void Retire(std::size_t index);
  processInfo& Entry(int position) const;

  std::vector<std::unique_ptr<processInfo>> _entries;
  std::deque<int> _waiting;   // positions, ascending
  std::vector<int> _running;  // positions, the command added last first
  std::vector<int> _killed;   // positions of children that were killed and not yet reaped
  std::unique_ptr<vor::ChildWatch> _watch;  // the children of _running, in its order
  const std::unique_ptr<vor::WakeEvent> _wake;
  int _maxRunning;
  Order _order = LastAddedFirst;
  double _maxLoad = 0;  // 0 or less: no limit
  int _graceMs = 0;
  TAContainment _containment = TAContainment::Tree;
  bool _leavesNobody = false;
  bool _cancelled = false;  // a command was, which Check has not reported yet
};

#endif  // VOR_PROCESS_TAPROCESSLIST_H
