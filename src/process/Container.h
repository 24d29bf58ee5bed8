#ifndef VOR_PROCESS_CONTAINER_H
#define VOR_PROCESS_CONTAINER_H

#include <sys/types.h>

#include <cstdint>
#include <memory>

#include "process/TAContainment.h"

namespace vor {

/// The processes of one command, found and signalled as its TAContainment says.
///
/// Made before the command starts.  Its members are the command and what it has started, as long as
/// they have not ended.  A member that is signalled is identified by a process descriptor, its
/// start time or a group that has members, so another process that has got its number is safe.
///
/// Threads: one object belongs to one thread at a time.
class Container {
 public:
  /// What the start of a command has to do for its container.
  struct Entry {
    const char* variable = nullptr;  ///< "NAME=value" for the environment; null: none
    bool ownGroup = false;           ///< the command leads a process group
    int controlGroup = -1;           ///< the file cgroup.procs of its control group; -1: none
    std::uint64_t mark = 0;          ///< see MarkedProcesses; 0: none

    /// Applies all but the variable.  Called in the child before it opens a file, after a setsid.
    /// Async-signal-safe; what cannot be applied is left out.
    void Apply() const;
  };

  /// Null for Tree, which needs a container only if SIGTERM precedes a kill: see MakeForTree.
  static std::unique_ptr<Container> Make(TAContainment containment);
  /// For a command that runs already as the process \a root, a child of this one.
  static std::unique_ptr<Container> MakeForTree(pid_t root);
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

  /// Sends \a signal to all members; SIGKILL again and again until none is left.  After SIGTERM, or
  /// with it, stopped members are continued.  Returns how many got the signal.
  virtual int SignalAll(int signal) = 0;

  /// Whether a member has not ended yet.
  virtual bool HasLiving() = 0;

  /// The command has ended and will be reaped next; what it has left behind stays a member.
  virtual void PrepareReap() {}
};

}  // namespace vor

#endif  // VOR_PROCESS_CONTAINER_H
