#ifndef VOR_EXAMPLES_CAMPAIGN_PROGRESS_H
#define VOR_EXAMPLES_CAMPAIGN_PROGRESS_H

#include <chrono>
#include <string>

#include "TestResult.h"

namespace campaign {

/// Shows on standard output how far a campaign is: one live line on a terminal, one plain line for
/// each finished test elsewhere.
class Progress {
 public:
  explicit Progress(int total);

  /// A test has ended.
  void Report(const TestResult& result);
  /// Refreshes the live line.
  void Show(int running);
  /// Removes the live line.
  void Finish();

 private:
  const int _total;
  const bool _isLive;
  const std::chrono::steady_clock::time_point _start;
  int _done = 0;
  int _failed = 0;
  std::string _shown;  // the live line as it stands on the terminal
};

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_PROGRESS_H
