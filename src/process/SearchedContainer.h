#ifndef VOR_PROCESS_SEARCHEDCONTAINER_H
#define VOR_PROCESS_SEARCHEDCONTAINER_H

#include <sys/types.h>

#include "process/Container.h"
#include "process/ProcessTable.h"

namespace vor {

/// A container whose members are found in the process table.
///
/// They are stopped before the first one is signalled, see StoppedTree.  SIGKILL is complete once a
/// whole reading of the table shows no member that has not got it.
class SearchedContainer : public Container {
 public:
  void NoteStart(pid_t root) override;
  int SignalAll(int signal) override;
  bool HasLiving() override;

 protected:
  /// The members that \a table shows; it may include some that have ended.
  virtual ProcessTable Find(const ProcessTable& table) = 0;
  /// Called for each member that got a signal.
  virtual void NoteSignalled(const ProcessRow&) {}

  /// The members that live now.
  ProcessTable FindLiving();

  /// The command.  Its number is 0 if there is none, its start 0 if that could not be read.
  const ProcessRow& Root() const { return _root; }

 private:
  ProcessTable SignalOnce(int signal, const ProcessTable& except);

  ProcessRow _root{0, 0};
  ProcessRow _living{0, 0};  // the member that HasLiving has found last
};

/// Waits until the killed \a processes have ended, at most a short time: a process may still be
/// busy in the system.
void AwaitEnds(const ProcessTable& processes);

}  // namespace vor

#endif  // VOR_PROCESS_SEARCHEDCONTAINER_H
