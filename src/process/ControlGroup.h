#ifndef VOR_PROCESS_CONTROLGROUP_H
#define VOR_PROCESS_CONTROLGROUP_H

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include "base/PosixFile.h"

namespace vor {

/// A control group (cgroup v2) below that of this process, and the groups that its members make
/// below it.
///
/// It is removed with the object if it has no members then, otherwise when a later object of this
/// process is made or destroyed, or when this process exits.  What is left after that, or by a
/// process that was killed, is removed by the next process that makes a group in the same place,
/// once it has no members.
class ControlGroup {
 public:
  /// Null if this process cannot make one, or not now.
  static std::unique_ptr<ControlGroup> Make();

  /// Whether Make has made one or would.
  static bool IsPossible();

  ControlGroup(const ControlGroup&) = delete;
  ControlGroup& operator=(const ControlGroup&) = delete;
  ~ControlGroup();

  /// The file to which a process writes "0" to become a member; -1 after CloseEntry.
  int EntryFile() const { return _entry.Get(); }
  void CloseEntry() { _entry.Reset(-1); }

  /// Whether the process \a pid is a member, or was when it ended; none if that cannot be read.
  std::optional<bool> Holds(pid_t pid) const;

  /// Whether a member has not ended.
  bool IsPopulated() const;

  /// The numbers of the members that have not ended.
  std::unordered_set<int> Members() const;

  /// Kills all members at once, also those that they start at this moment.
  bool Kill() const;

  /// Waits at most \a limitMs milliseconds until no member lives.
  void AwaitEmpty(int limitMs) const;

 private:
  ControlGroup(std::string directory, std::string path, FileDescriptor entry);

  const pid_t _owner;            // a fork of this process must not remove it
  const std::string _directory;  // in the file system
  const std::string _path;       // as in /proc/PID/cgroup
  FileDescriptor _entry;
};

}  // namespace vor

#endif  // VOR_PROCESS_CONTROLGROUP_H
