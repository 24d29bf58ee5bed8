#ifndef VOR_EXAMPLES_CAMPAIGN_TESTRESULT_H
#define VOR_EXAMPLES_CAMPAIGN_TESTRESULT_H

#include <string>
#include <vector>

namespace campaign {

/// How a test ended.  Only kPassed counts as passed.
enum class Outcome {
  kPassed,
  kFailed,         ///< it ended with another return code than 0
  kTimedOut,       ///< killed with its tree because its time was over
  kNotFound,       ///< there is no such program
  kNotExecutable,  ///< there is one, which this user cannot execute
  kNotStarted,     ///< the system made no process for it, or its log cannot be written
  kLost,           ///< it ran, but how it ended is not known
  kInterrupted,    ///< killed with its tree because the campaign was interrupted
  kNotRun          ///< never started because the campaign was interrupted
};

constexpr Outcome kOutcomes[] = {Outcome::kPassed,   Outcome::kFailed,        Outcome::kTimedOut,
                                 Outcome::kNotFound, Outcome::kNotExecutable, Outcome::kNotStarted,
                                 Outcome::kLost,     Outcome::kInterrupted,   Outcome::kNotRun};

// Return codes of tests that have no exit code of their own; the first three are those of a shell
// and of other launchers.
constexpr int kNotFoundCode = 127;
constexpr int kNotExecutableCode = 126;
constexpr int kNotStartedCode = 125;
constexpr int kLostCode = 124;

/// The result of one test.
struct TestResult {
  std::string name;
  Outcome outcome = Outcome::kNotRun;
  int returnCode = 0;   ///< of TAProcessList, or one of those above; 0 if interrupted or not run
  double seconds = 0;   ///< from start to end
  std::string logFile;  ///< holds its output; "" if none was kept
  std::string reason;   ///< why it was not started; "" if there is nothing to add
};

/// The outcome as one to three words.
std::string Word(Outcome outcome);

/// The same with the return code or the reason.
std::string Describe(const TestResult& result);

/// How many results have this outcome.
int Count(const std::vector<TestResult>& results, Outcome outcome);

/// True if there is a result and all of them passed.
bool AllPassed(const std::vector<TestResult>& results);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_TESTRESULT_H
