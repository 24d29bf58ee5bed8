#include "TestResult.h"

#include <algorithm>

namespace campaign {

std::string Word(Outcome outcome) {
  switch (outcome) {
    case Outcome::kPassed:
      return "passed";
    case Outcome::kFailed:
      return "failed";
    case Outcome::kTimedOut:
      return "timed out";
    case Outcome::kNotFound:
      return "not found";
    case Outcome::kNotExecutable:
      return "not executable";
    case Outcome::kNotStarted:
      return "not started";
    case Outcome::kLost:
      return "lost";
    case Outcome::kInterrupted:
      return "interrupted";
    case Outcome::kNotRun:
      break;
  }
  return "not run";
}

std::string Describe(const TestResult& result) {
  const bool hasCode = result.outcome == Outcome::kFailed || result.outcome == Outcome::kTimedOut;
  const std::string detail = hasCode ? std::to_string(result.returnCode) : result.reason;
  return Word(result.outcome) + (detail.empty() ? "" : " (" + detail + ")");
}

int Count(const std::vector<TestResult>& results, Outcome outcome) {
  return static_cast<int>(
      std::count_if(results.begin(), results.end(),
                    [outcome](const TestResult& result) { return result.outcome == outcome; }));
}

bool AllPassed(const std::vector<TestResult>& results) {
  return !results.empty() && Count(results, Outcome::kPassed) == static_cast<int>(results.size());
}

}  // namespace campaign
