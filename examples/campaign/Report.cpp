#include "Report.h"

#include <stdio.h>

#include <algorithm>

namespace campaign {
namespace {

std::string Seconds(double seconds) {
  char text[32];
  snprintf(text, sizeof text, "%.2f", seconds);
  return text;
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

void AddCount(const std::vector<TestResult>& results, Outcome outcome, const char* word,
              std::string* line) {
  const int count = Count(results, outcome);
  if (count > 0) *line += ", " + std::to_string(count) + " " + word;
}

}  // namespace

std::string MakeReport(const std::vector<TestResult>& results, double seconds) {
  std::vector<TestResult> sorted = results;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const TestResult& a, const TestResult& b) { return a.seconds > b.seconds; });
  std::size_t nameWidth = 4;
  std::size_t resultWidth = 6;
  for (const TestResult& result : sorted) {
    nameWidth = std::max(nameWidth, result.name.size());
    resultWidth = std::max(resultWidth, Describe(result).size());
  }

  std::string text =
      Padded("name", nameWidth) + "  " + Padded("result", resultWidth) + "  seconds\n";
  for (const TestResult& result : sorted) {
    text += Padded(result.name, nameWidth) + "  " + Padded(Describe(result), resultWidth) + "  " +
            Seconds(result.seconds) + "\n";
  }
  std::string summary = std::to_string(results.size()) + (results.size() == 1 ? " test" : " tests");
  summary += ": " + std::to_string(Count(results, Outcome::kPassed)) + " passed";
  AddCount(results, Outcome::kFailed, "failed", &summary);
  AddCount(results, Outcome::kTimedOut, "timed out", &summary);
  AddCount(results, Outcome::kInterrupted, "interrupted", &summary);
  AddCount(results, Outcome::kNotRun, "not run", &summary);
  return text + "\n" + summary + ", in " + Seconds(seconds) + " s\n";
}

}  // namespace campaign
