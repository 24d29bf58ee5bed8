#ifndef VOR_PROCESS_TREECONTAINER_H
#define VOR_PROCESS_TREECONTAINER_H

#include <set>

#include "process/SearchedContainer.h"
#include "process/StoppedTree.h"

// Members are the command, the processes that were signalled before, and the descendants of all
// these.  So members that ignore SIGTERM are found later, although it has ended their parents.
//
// Processes whose parent had ended before the first signal are missed.

namespace vor {

/// The processes of a command as the process table shows them.
class TreeContainer : public SearchedContainer {
 protected:
  ProcessTable Find(const ProcessTable& table) override;
  void NoteSignalled(const ProcessRow& process) override { _signalled.insert(IdOf(process)); }

  /// Whether \a process is a member for another reason.
  virtual bool IsMarked(const ProcessRow& process);

 private:
  std::set<ProcessId> _signalled;
};

}  // namespace vor

#endif  // VOR_PROCESS_TREECONTAINER_H
