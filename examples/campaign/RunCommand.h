#ifndef VOR_EXAMPLES_CAMPAIGN_RUNCOMMAND_H
#define VOR_EXAMPLES_CAMPAIGN_RUNCOMMAND_H

namespace campaign {

// Exit statuses of the tool.
constexpr int kAllPassed = 0;
constexpr int kSomeFailed = 1;
constexpr int kBadInput = 2;

/// `campaign run ...` with the command line of main; gives the exit status.
int RunCommand(int argc, char** argv);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_RUNCOMMAND_H
