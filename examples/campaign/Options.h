#ifndef VOR_EXAMPLES_CAMPAIGN_OPTIONS_H
#define VOR_EXAMPLES_CAMPAIGN_OPTIONS_H

#include <string>
#include <vector>

#include "Campaign.h"

namespace campaign {

enum class Command { kRun, kServe, kRequest };

/// The values of a command line.  Each command uses some of them.
struct Options {
  std::string testList;
  std::string expression;
  std::string resultsDirectory;  ///< "" if output is not kept
  std::string junitFile;         ///< "" for none
  std::string host;
  std::string tokenFile;            ///< "" for none
  std::string outDirectory;         ///< "" if the output is discarded
  std::vector<std::string> owners;  ///< organisation file and KVR file; empty for none
  std::vector<std::string> load;    ///< as DatabaseLoad::Prepare takes them; empty for no load
  int port = 0;
  int requests = 0;  ///< to be served; 0 for no limit
  int jobs = 1;
  int timeout = 0;  ///< seconds; 0 for no limit
  bool wantsHelp = false;

  Limits GetLimits() const { return {jobs, timeout}; }
};

/// The help text of a command.
std::string HelpFor(Command command);

/// Reads the arguments after `campaign`, the first of which is the command.  Returns "" or one line
/// with the problem.
std::string ParseOptions(Command command, int argc, char** argv, Options* options);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_OPTIONS_H
