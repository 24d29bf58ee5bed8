#ifndef VOR_PROCESS_TAPROCESSLIST_H
#define VOR_PROCESS_TAPROCESSLIST_H

#include <cstddef>
#include <memory>
#include <vector>

#include "base/Export.h"
#include "base/VorString.h"

struct processInfo;
namespace vor {
class ChildWatch;
}

/// A queue of commands that run as child processes, a limited number at a time, each with a time
/// limit of its own where wanted.
///
/// Call Start for every command, then
///
///     while (list.NDone() < list.Size()) {
///       list.Check();
///       list.WaitForChange(-1);
///     }
///
/// (with a limit of at least 1 command at a time: with 0 none ever starts and the loop never ends)
/// and read each result by its position.  Nothing happens between two calls: there is no thread and
/// no signal handler.  More commands may be added at any time.  A command goes from waiting (0) to
/// running (1) to done (2), never back.  Positions are 1-based, in the order of Start.
///
/// Ownership: keeps copies of what it is given.  The destructor neither kills nor waits for
///            children that still run; they go on, and stay in the process table when they end.  It
///            gives those that were killed a tenth of a second to go.
/// Errors:    none are reported.  A command that cannot be started or whose end was collected
///            elsewhere is done with return code 0.  A position outside the list is a bug of the
///            caller: a message on standard error, then abort.
/// Threads:   a list belongs to one thread at a time.
class VOR_API TAProcessList {
 public:
  /// At most 10 commands run at once.
  TAProcessList();
  /// At most \a maxRunning commands run at once; with 0 or less none ever starts.
  explicit TAProcessList(int maxRunning);
  TAProcessList(const TAProcessList&) = delete;
  TAProcessList& operator=(const TAProcessList&) = delete;
  ~TAProcessList();

  /// Queues \a command (see TAProcess::Start), which may run for \a timeout seconds, 0 for as long
  /// as it likes.  Returns its position.
  int Start(const VorString& command, int timeout) noexcept;
  /// The same, with standard output and standard error sent to the file \a output.
  int Start(const VorString& command, int timeout, const VorString& output) noexcept;

  /// One step: notices the commands that have ended, kills those whose time is over, each with its
  /// whole process tree, and starts waiting ones up to the limit.  Returns 1 if a command changed
  /// its state, else 0.
  ///
  /// Callers rely on the order: the command added last starts first.  A command is killed by the
  /// first Check in a second later than its start plus its limit.  The cost grows with the commands
  /// that run, not with those that wait or are done.
  int Check() noexcept;

  /// Blocks, without using the processor, until Check has something to do: a running command has
  /// ended, its time is over, or a waiting one may start.  Returns 1 then, 0 when \a limitMs
  /// have passed before; less than 0 for no limit.  Returns 0 at once if nothing runs that could
  /// change anything.
  int WaitForChange(int limitMs) noexcept;

  int NWaiting() const;
  int NRunning() const;
  int NDone() const;
  int Size() const;

  /// The folded exit status (see TAProcess) of a command that is done, 99 if it was killed for its
  /// time limit; 0 before.
  int GetReturnCode(int position) const;

  /// 0 waiting, 1 running, 2 done, also if it was killed.
  int GetStatus(int position) const;

 private:
  bool NoticeEnds();
  bool KillOverdue();
  void CollectKilled();
  bool MayLaunch() const;
  void LaunchNext();
  void Retire(std::size_t index);
  processInfo& Entry(int position) const;

  std::vector<std::unique_ptr<processInfo>> _entries;
  std::vector<int> _waiting;                // positions, the next one to start at the end
  std::vector<int> _running;                // positions, the command added last first
  std::vector<int> _killed;                 // positions of children that may not be collected yet
  std::unique_ptr<vor::ChildWatch> _watch;  // the children of _running, in its order
  int _maxRunning;
};

#endif  // VOR_PROCESS_TAPROCESSLIST_H
