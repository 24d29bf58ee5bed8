#ifndef VOR_PROCESS_STOPPEDTREE_H
#define VOR_PROCESS_STOPPEDTREE_H

#include <functional>
#include <set>
#include <utility>
#include <vector>

#include "process/ProcessTable.h"
#include "process/UndisturbedScope.h"

namespace vor {

/// The number and the start time of a process, which distinguish it from a later one of the same
/// number.
using ProcessId = std::pair<int, unsigned long long>;

inline ProcessId IdOf(const ProcessRow& process) {
  return {process.pid, process.start};
}

/// A process and its descendants, or other processes that belong together, stopped while they are
/// killed, so that none can start another process in place of one that dies.
///
/// The destructor continues the processes that still live.  Until then, signals to the calling
/// thread are blocked, because one that ended this process would leave the tree stopped.  If this
/// process itself belongs to the tree, nothing is stopped.  Processes that this user must not
/// signal are not stopped either.
class StoppedTree {
 public:
  /// Returns the processes to stop that a process table shows.
  using Search = std::function<ProcessTable(const ProcessTable& table)>;

  /// \a isChild: whether \a root is a child of this process.  The tree is empty if that child was
  /// reaped.
  StoppedTree(int root, bool isChild);
  /// The processes that \a search finds; none if the process table cannot be read.
  explicit StoppedTree(Search search);
  StoppedTree(const StoppedTree&) = delete;
  StoppedTree& operator=(const StoppedTree&) = delete;
  ~StoppedTree();

  /// In the order of the search, for a tree that of FindTree; only the root if the process table
  /// cannot be read.
  const ProcessTable& Processes() const { return _processes; }

  /// The signals that the calling thread blocked before.
  const sigset_t& Mask() const { return _undisturbed.Mask(); }

  /// Sends \a signal to all of them, the last one first.  Returns for each 0 or an errno, ESRCH if
  /// it has ended.
  std::vector<int> SignalAll(int signal) const;

 private:
  void Stop();
  bool Find();
  void StopAll();
  bool StopFound();
  int Signal(const ProcessRow& process, int signal) const;

  const UndisturbedScope _undisturbed;  // the first member, so that it ends last
  const Search _search;
  const int _child;  // the root if it is a child, otherwise 0
  ProcessTable _processes;
  ProcessTable _stopped;
  std::set<ProcessId> _signalled;  // the stopped ones and the refused ones
  std::set<ProcessId> _refused;    // that this user must not stop, or that had ended
};

}  // namespace vor

#endif  // VOR_PROCESS_STOPPEDTREE_H
