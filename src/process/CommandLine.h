#ifndef VOR_PROCESS_COMMANDLINE_H
#define VOR_PROCESS_COMMANDLINE_H

#include <string>
#include <vector>

#include "base/VorString.h"

namespace vor {

/// The arguments of \a command, the program first; none if it has no words.  TAProcess::Start
/// documents the rules.
std::vector<std::string> ParseCommandLine(const VorString& command);

}  // namespace vor

#endif  // VOR_PROCESS_COMMANDLINE_H
