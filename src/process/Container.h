#ifndef VOR_PROCESS_CONTAINER_H
#define VOR_PROCESS_CONTAINER_H

#include <sys/types.h>

#include <memory>

#include "process/TAContainment.h"

namespace vor {

/// The processes of one command, found and signalled as its TAContainment says.
///
/// Made before the command starts.  Its members are the command and what it has started; a member
/// that is signalled is identified by a process descriptor or its start time, so another process
/// that has got its number is safe.
///
/// Threads: one object belongs to one thread at a time.
class Container {
 public:
  /// What the start of a command has to do for it.
  struct Entry {
    const char* variable = nullptr;  ///< "NAME=value" for the environment; null: none
    bool ownGroup = false;           ///< setpgid(0, 0)
    int controlGroup = -1;           ///< the child writes "0" to this descriptor; -1: none
  };

  static std::unique_ptr<Container> Make(TAContainment containment);
  /// See TAProcess::ContainmentInUse.
  static const char* MeansOf(TAContainment containment);

  Container() = default;
  Container(const Container&) = delete;
  Container& operator=(const Container&) = delete;
  virtual ~Container() = default;

  /// Valid as long as this object.
  virtual Entry GetEntry() const { return {}; }

  /// The command was started as the process \a root, a child of this one; 0 if that failed.
  virtual void NoteStart(pid_t root) = 0;

  /// Sends \a signal to all members, except that SIGKILL is repeated until none is left.  Returns
  /// how many got it.
  virtual int SignalAll(int signal) = 0;

  /// Whether a member has not ended yet.
  virtual bool HasLiving() = 0;

  /// Kills all members but the command itself, which has ended but was not reaped yet.  Returns how
  /// many there were.
  virtual int KillLeft() = 0;

  /// Reaps the orphans of all commands that have become children of this process and have ended.
  static void ReapOrphans();
};

}  // namespace vor

#endif  // VOR_PROCESS_CONTAINER_H
