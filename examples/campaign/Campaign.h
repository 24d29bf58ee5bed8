#ifndef VOR_EXAMPLES_CAMPAIGN_CAMPAIGN_H
#define VOR_EXAMPLES_CAMPAIGN_CAMPAIGN_H

#include <string>
#include <vector>

#include "TestList.h"
#include "TestResult.h"

namespace campaign {

class Progress;

/// How the tests of a campaign are run.
struct Limits {
  int jobs = 1;     ///< tests that run at once
  int timeout = 0;  ///< seconds for each test; 0 for no limit
};

/// Makes a directory and those above it.  Returns "" or why that failed.
std::string MakeDirectory(const std::string& directory);

/// Makes the log file `name.log` of a test below \a directory, and the directories it needs.
/// Returns "" and its path, or one line that says why it cannot be made.
std::string MakeLogFile(const std::string& name, const std::string& directory,
                        std::string* logFile);

/// Makes the log files of all tests, so that a failure shows before any test runs.
std::string MakeLogFiles(const std::vector<Test>& tests, const std::string& directory,
                         std::vector<std::string>* logFiles);

/// Runs \a tests in parallel and returns one result for each, in the same order.  The output of
/// each goes to its entry of \a logFiles; with an empty entry it is discarded.  They inherit
/// standard input (see DetachInput).  If the campaign is interrupted or \a progress has lost its
/// reader, no further test is started and every running one is killed with its process tree.
std::vector<TestResult> RunCampaign(const std::vector<Test>& tests, const Limits& limits,
                                    const std::vector<std::string>& logFiles, Progress* progress);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_CAMPAIGN_H
