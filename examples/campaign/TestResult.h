#ifndef VOR_EXAMPLES_CAMPAIGN_TESTRESULT_H
#define VOR_EXAMPLES_CAMPAIGN_TESTRESULT_H

#include <string>
#include <vector>

namespace campaign {

enum class Outcome {
  kPassed,
  kFailed,
  kTimedOut,     ///< killed with its tree because its time was over
  kInterrupted,  ///< killed with its tree because the campaign was interrupted
  kNotRun        ///< never started because the campaign was interrupted
};

/// What became of one test.
struct TestResult {
  std::string name;
  Outcome outcome = Outcome::kNotRun;
  int returnCode = 0;   ///< as TAProcessList gives it; 99 after a time-out
  double seconds = 0;   ///< from start to end
  std::string logFile;  ///< holds its output; "" if none was kept
};

/// The outcome as a word or two for the reader.
std::string Word(Outcome outcome);

/// The same with the return code where it tells something.
std::string Describe(const TestResult& result);

/// How many results have this outcome.
int Count(const std::vector<TestResult>& results, Outcome outcome);

/// True if there is a result and all of them passed.
bool AllPassed(const std::vector<TestResult>& results);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_TESTRESULT_H
