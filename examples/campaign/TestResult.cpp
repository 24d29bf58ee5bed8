#include "TestResult.h"

#include <algorithm>

namespace campaign {

std::string Describe(const TestResult& result) {
  const std::string code = " (" + std::to_string(result.returnCode) + ")";
  switch (result.outcome) {
    case Outcome::kPassed:
      return "passed";
    case Outcome::kFailed:
      return "failed" + code;
    case Outcome::kTimedOut:
      return "timed out" + code;
    case Outcome::kInterrupted:
      return "interrupted";
    case Outcome::kNotRun:
      break;
  }
  return "not run";
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
