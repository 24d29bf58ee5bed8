#ifndef VOR_PROCESS_CHILDSTART_H
#define VOR_PROCESS_CHILDSTART_H

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "process/ChildSettings.h"
#include "process/Container.h"

namespace vor {

/// The result of a start.
struct StartedChild {
  pid_t pid = -1;  ///< -1 if fork failed
  int error = 0;   ///< errno of the fork, or of what failed in a child that ends with exit code 1
  std::string object;  ///< what failed; see TAProcessEnd
  /// If the start does not wait for the exec: the errno of a failed exec, valid once the child has
  /// ended.  Otherwise null.
  std::shared_ptr<const int> lateError;
};

/// A command to start: its arguments, the program first, and how to start it.
struct ChildRequest {
  std::vector<std::string> arguments;
  const ChildSettings& settings;
  Container::Entry entry;
};

/// Starts a child process.
StartedChild StartChild(ChildRequest request);

}  // namespace vor

#endif  // VOR_PROCESS_CHILDSTART_H
