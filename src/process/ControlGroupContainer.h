#ifndef VOR_PROCESS_CONTROLGROUPCONTAINER_H
#define VOR_PROCESS_CONTROLGROUPCONTAINER_H

#include <memory>

#include "process/ControlGroup.h"
#include "process/MarkedProcesses.h"

// The child enters the control group before its exec, and all that it starts begins there.  Only a
// write to the system's files moves a process to another group, so neither lost parents nor new
// sessions nor a changed environment matter, and the system kills all members as one
// (cgroup.kill): a member cannot escape by a fork.  cgroup.kill spares a process whose first thread
// has ended before the others, so what does not end soon is killed one by one.  Such a kill, and
// any other signal, is sent while all members are stopped, see StoppedTree.
//
// The child may fail to enter the group, and nothing reports that.  So the command has the marks of
// MarkedProcesses as well, and they are used as long as it was not seen in its group.
//
// The group is removed when the command has ended and nobody is left; ControlGroup has the rest.
//
// Missed are processes that were moved to another control group, and those that another process
// starts on request.

namespace vor {

/// The processes in the control group of a command.
class ControlGroupContainer : public MarkedProcesses {
 public:
  explicit ControlGroupContainer(std::unique_ptr<ControlGroup> group) : _group(std::move(group)) {}
  Entry GetEntry() const override;
  void NoteStart(pid_t root) override;
  int SignalAll(int signal) override;
  bool HasLiving() override;
  void PrepareReap() override;

 protected:
  ProcessTable Find(const ProcessTable& table) override;

 private:
  bool HasEntered();

  std::unique_ptr<ControlGroup> _group;  // null once nobody can be left
  bool _hasEntered = false;
};

}  // namespace vor

#endif  // VOR_PROCESS_CONTROLGROUPCONTAINER_H
