#ifndef VOR_EXAMPLES_CAMPAIGN_PROGRESS_H
#define VOR_EXAMPLES_CAMPAIGN_PROGRESS_H

#include <chrono>
#include <string>

#include "TestResult.h"

namespace campaign {

/// The reader who waits for a campaign.
enum class Watcher {
  kReader,    ///< the reader of standard output; without it the campaign has no purpose
  kRequester  ///< the requester on the network; standard output is a log
};

/// Shows on standard output how far a campaign is: one live line on a terminal, one plain line for
/// each finished test elsewhere.
class Progress {
 public:
  Progress(int total, Watcher watcher);

  /// A test has ended.
  void Report(const TestResult& result);
  /// Refreshes the live line.
  void Show(int running);
  /// Removes the live line.
  void Finish();

  /// False if the reader that waits for this campaign has gone.
  bool IsSeen() const;

 private:
  const int _total;
  const Watcher _watcher;
  const bool _isLive;
  const std::chrono::steady_clock::time_point _start;
  int _done = 0;
  int _failed = 0;
  std::string _shown;  // the live line as it stands on the terminal
};

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_PROGRESS_H
