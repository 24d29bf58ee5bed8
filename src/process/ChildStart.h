#ifndef VOR_PROCESS_CHILDSTART_H
#define VOR_PROCESS_CHILDSTART_H

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "process/ChildSettings.h"
#include "process/Container.h"

namespace vor {

/// Why a command could not be started.
struct StartFailure {
  int error = 0;       ///< errno; 0: it was started
  std::string object;  ///< what failed; see TAProcessEnd
};

/// The failure of a child whose start was not waited for.
class LateFailure {
 public:
  virtual ~LateFailure() = default;
  /// Valid once the child has ended.
  virtual StartFailure Get() const = 0;
};

/// The result of a start.
struct StartedChild {
  pid_t pid = -1;        ///< -1 if fork failed
  StartFailure failure;  ///< of the fork, or in a child that ends with exit code 1
  std::shared_ptr<const LateFailure> late;  ///< null: the failure is known
};

/// A command to start: its arguments, the program first, and how to start it.
struct ChildRequest {
  std::vector<std::string> arguments;
  const ChildSettings& settings;
  Container::Entry entry = {};
  int outputPipe = -1;  ///< standard output and error, unless they have files; -1: none
};

/// Starts a child process.
StartedChild StartChild(ChildRequest request);

}  // namespace vor

#endif  // VOR_PROCESS_CHILDSTART_H
