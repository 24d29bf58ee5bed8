#ifndef VOR_PROCESS_MARKEDPROCESSES_H
#define VOR_PROCESS_MARKEDPROCESSES_H

#include <cstdint>
#include <set>
#include <string>

#include "process/StoppedTree.h"
#include "process/TreeContainer.h"

// A command starts with two marks that all its descendants inherit, whatever becomes of their
// parents, groups and sessions.  So a scan of the process table finds them, and this process need
// not adopt them.  Each mark covers what the other cannot:
//
// - A value of the limit RLIMIT_LOCKS, which has had no effect since Linux 2.6.  exec keeps it, no
//   program has a reason to change it, and every user may read it in /proc/PID/limits, also that of
//   a process of another user or one that has cleared its environment.  A command that contains its
//   own commands marks them too, but only in the soft limit; the hard one stays that of the
//   outermost container.  So of three levels the middle one is lost.
// - A variable in the environment, with a name of its own for each command, so that any number of
//   levels keep theirs.  It is read from /proc/PID/environ: for processes of the same user, and not
//   in the middle of an exec, when that file is empty for a moment.  Such a process is looked at
//   again with the next reading, and a kill takes more than one.
//
// Processes that started before the command are not looked at, and those seen without a mark not
// again: a process gets its marks when it is forked, or not at all.
//
// Orphans each of which starts the next and ends at once are gone before a reading of the table
// comes to them.  So a kill, if processes were started while it read the table, goes on with the
// newest process of the system: it looks at that one alone and kills it at once if it is marked,
// again and again as long as there are such.  A killed process completes no fork.
//
// Members are the marked processes, and the descendants of all members, marked or not.  Missed are
// processes that have lost both marks and their parents, those that another process starts on
// request, and, for SIGKILL, those that this user must not signal.  A chain as above may escape,
// and many at once mostly do.

namespace vor {

/// A number that no other call returns, in this or another process.  Below 2^61.
std::uint64_t UniqueNumber();

/// The process that got a number from UniqueNumber.
pid_t ProcessOf(std::uint64_t number);

/// Applies the mark \a number to this process, as far as that is allowed.  Async-signal-safe.
void ApplyMark(std::uint64_t number);

/// The processes of a command that has passed on its marks.
class MarkedProcesses : public TreeContainer {
 public:
  MarkedProcesses();
  Entry GetEntry() const override;
  int SignalAll(int signal) override;

 protected:
  ProcessTable Find(const ProcessTable& table) override;
  bool IsMarked(const ProcessRow& process) override;

 private:
  int KillNewest() const;

  const std::uint64_t _number;
  const std::string _variable;     // "NAME=value"
  std::set<ProcessId> _strangers;  // seen without a mark
};

}  // namespace vor

#endif  // VOR_PROCESS_MARKEDPROCESSES_H
