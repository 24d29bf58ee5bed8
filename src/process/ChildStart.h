#ifndef VOR_PROCESS_CHILDSTART_H
#define VOR_PROCESS_CHILDSTART_H

#include <sys/types.h>

#include <memory>

#include "base/VorString.h"

namespace vor {

/// The result of a start.
struct StartedChild {
  pid_t pid = -1;  ///< -1 if fork failed
  int error = 0;   ///< errno of the fork, or of the exec in a child that ends with exit code 1
  /// If the start does not wait for the exec: the errno of a failed exec, valid once the child has
  /// ended.  Otherwise null.
  std::shared_ptr<const int> lateError;
};

/// Starts \a command (see TAProcess::Start) as a child process, with standard output and error sent
/// to the file \a output and standard input read from the file \a input; empty names: inherited.
StartedChild StartChild(const VorString& command, const VorString& output, const VorString& input);

}  // namespace vor

#endif  // VOR_PROCESS_CHILDSTART_H
