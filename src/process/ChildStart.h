#ifndef VOR_PROCESS_CHILDSTART_H
#define VOR_PROCESS_CHILDSTART_H

#include <sys/types.h>

#include "base/VorString.h"

namespace vor {

/// Starts \a command (see TAProcess::Start) as a child process, with standard output and error sent
/// to the file \a output and standard input read from the file \a input; empty names: inherited.
/// Returns the identifier of the child, -1 if the process could not be split.
pid_t StartChild(const VorString& command, const VorString& output, const VorString& input);

}  // namespace vor

#endif  // VOR_PROCESS_CHILDSTART_H
