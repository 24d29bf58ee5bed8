#ifndef VOR_PROCESS_CHILDWATCH_H
#define VOR_PROCESS_CHILDWATCH_H

#include <poll.h>
#include <sys/types.h>

#include <cstddef>
#include <vector>

#include "base/PosixFile.h"

namespace vor {

/// Waits for the end of any of some children of this process, without collecting it.
///
/// Holds a descriptor for each child it watches, from the first wait on; children beyond what is
/// decent, and all of them on systems that have no such descriptors, are looked at in short
/// intervals.
class ChildWatch {
 public:
  /// Inserts a child at the 0-based \a index.  One that does not exist, or has an identifier of 0
  /// or less, counts as ended.
  void Insert(std::size_t index, pid_t pid);

  /// Takes out the child at the 0-based \a index.
  void Remove(std::size_t index);

  /// Waits at most \a milliseconds, negative for no limit, and tells whether a child has ended.
  /// False may come early, for example when a signal arrives.
  bool WaitForEnd(int milliseconds);

 private:
  struct Child {
    pid_t pid;
    FileDescriptor end;  // readable when the child has ended
  };

  bool Watch(Child& child);
  bool WaitWithoutDescriptors(int milliseconds);

  std::vector<Child> _children;
  std::vector<pollfd> _polled;  // of the children that have a descriptor, for one wait
};

}  // namespace vor

#endif  // VOR_PROCESS_CHILDWATCH_H
