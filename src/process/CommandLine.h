#ifndef VOR_PROCESS_COMMANDLINE_H
#define VOR_PROCESS_COMMANDLINE_H

#include <string>
#include <vector>

#include "base/VorString.h"

namespace vor {

/// The arguments of \a command, the program first; none if it has no words.  The rules are told at
/// TAProcess::Start.
std::vector<std::string> ParseCommandLine(const VorString& command);

}  // namespace vor

#endif  // VOR_PROCESS_COMMANDLINE_H
