#ifndef VOR_EXAMPLES_CAMPAIGN_RUNOPTIONS_H
#define VOR_EXAMPLES_CAMPAIGN_RUNOPTIONS_H

#include <string>

#include "Campaign.h"

namespace campaign {

/// What the command line of `campaign run` says.
struct RunOptions {
  std::string testList;
  std::string expression;
  std::string resultsFolder;  ///< "" if output is not kept
  std::string junitFile;      ///< "" for none
  Limits limits;
  bool wantsHelp = false;
};

/// The help text of `campaign run`.
std::string RunHelp();

/// Reads the arguments behind `campaign`, the first one being `run`.  Returns "" or one line that
/// says what is wrong with them.
std::string ParseRunOptions(int argc, char** argv, RunOptions* options);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_RUNOPTIONS_H
