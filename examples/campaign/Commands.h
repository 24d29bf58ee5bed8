#ifndef VOR_EXAMPLES_CAMPAIGN_COMMANDS_H
#define VOR_EXAMPLES_CAMPAIGN_COMMANDS_H

#include <string>

namespace campaign {

// Exit statuses of the tool.
constexpr int kAllPassed = 0;
constexpr int kSomeFailed = 1;
constexpr int kBadInput = 2;
constexpr int kNoServer = 3;  ///< it could not be reached, or broke off

/// Tells on standard error what is wrong, and gives \a status.
int Refuse(const std::string& problem, int status = kBadInput);

// The commands, each with the command line of main; they give the exit status.
int RunCommand(int argc, char** argv);
int ServeCommand(int argc, char** argv);
int RequestCommand(int argc, char** argv);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_COMMANDS_H
