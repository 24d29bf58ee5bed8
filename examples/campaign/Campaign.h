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

/// Makes the log file `name.log` of a test below \a folder, and the folders it needs.  Returns ""
/// and its path, or one line that says what went wrong.
std::string MakeLogFile(const std::string& name, const std::string& folder, std::string* logFile);

/// The same for every test, so that nothing has to be refused once tests run.
std::string MakeLogFiles(const std::vector<Test>& tests, const std::string& folder,
                         std::vector<std::string>* logFiles);

/// Runs \a tests in parallel and gives one result for each, in the same order.  Their output goes
/// to \a logFiles; where that is empty it is thrown away.  After an interrupt no further test is
/// started and every running one is killed with its tree.
std::vector<TestResult> RunCampaign(const std::vector<Test>& tests, const Limits& limits,
                                    const std::vector<std::string>& logFiles, Progress* progress);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_CAMPAIGN_H
