#ifndef VOR_EXAMPLES_CAMPAIGN_COMMANDS_H
#define VOR_EXAMPLES_CAMPAIGN_COMMANDS_H

#include <string>

namespace campaign {

// Exit statuses of the tool.
constexpr int kAllPassed = 0;
constexpr int kSomeFailed = 1;
constexpr int kTrouble = 2;   ///< wrong usage, unreadable input or unwritable output
constexpr int kNoServer = 3;  ///< not reached, refused the request, or broke off

/// Writes \a problem to standard error and returns \a status.
int Refuse(const std::string& problem, int status = kTrouble);

// The commands.  Each takes the command line of main and returns the exit status.
int RunCommand(int argc, char** argv);
int ServeCommand(int argc, char** argv);
int RequestCommand(int argc, char** argv);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_COMMANDS_H
