#ifndef VOR_PROCESS_GROUPCONTAINER_H
#define VOR_PROCESS_GROUPCONTAINER_H

#include <set>

#include "process/SearchedContainer.h"
#include "process/StoppedTree.h"

// The number of a process group is that of its leader, here the command.  The system does not give
// it to another process while the leader was not reaped or the group has a member.  It signals a
// group as one: a member cannot escape by a fork.
//
// Once the leader was reaped, the number may have been reused, unless a process that was a member
// before is one still.  So the members are stored just before the leader is reaped.  Afterwards the
// members are signalled one by one, as long as one of the stored ones is in the group.
//
// Processes that have changed their group are missed, except the command itself; and all of them if
// the system reaps the command, because SIGCHLD is ignored.

namespace vor {

/// The process group of a command.
class GroupContainer : public SearchedContainer {
 public:
  Entry GetEntry() const override;
  int SignalAll(int signal) override;
  void PrepareReap() override;

 protected:
  ProcessTable Find(const ProcessTable& table) override;

 private:
  std::set<ProcessId> _left;  // members at a signal, and when the command was reaped
};

}  // namespace vor

#endif  // VOR_PROCESS_GROUPCONTAINER_H
