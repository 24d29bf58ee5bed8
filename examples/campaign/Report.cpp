#include "Report.h"

#include <stdio.h>

#include <algorithm>

namespace campaign {
namespace {

// A longer name or result shifts only the rest of its own line.
constexpr std::size_t kWidest = 48;

std::string Seconds(double seconds) {
  char text[32];
  snprintf(text, sizeof text, "%.2f", seconds);
  return text;
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

}  // namespace

std::string MakeReport(const std::vector<TestResult>& results, double seconds) {
  std::vector<TestResult> sorted = results;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const TestResult& a, const TestResult& b) { return a.seconds > b.seconds; });
  std::size_t nameWidth = 4;
  std::size_t resultWidth = 6;
  for (const TestResult& result : sorted) {
    nameWidth = std::max(nameWidth, std::min(result.name.size(), kWidest));
    resultWidth = std::max(resultWidth, std::min(Describe(result).size(), kWidest));
  }

  std::string text =
      Padded("name", nameWidth) + "  " + Padded("result", resultWidth) + "  seconds\n";
  for (const TestResult& result : sorted) {
    text += Padded(result.name, nameWidth) + "  " + Padded(Describe(result), resultWidth) + "  " +
            Seconds(result.seconds) + "\n";
  }
  std::string summary = std::to_string(results.size()) + (results.size() == 1 ? " test" : " tests");
  summary += ": " + std::to_string(Count(results, Outcome::kPassed)) + " passed";
  for (const Outcome outcome : kOutcomes) {
    const int count = Count(results, outcome);
    if (outcome == Outcome::kPassed || count == 0) continue;
    summary += ", " + std::to_string(count) + " " + Word(outcome);
  }
  return text + "\n" + summary + ", in " + Seconds(seconds) + " s\n";
}

}  // namespace campaign
