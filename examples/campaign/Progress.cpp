#include "Progress.h"

#include <stdio.h>
#include <unistd.h>

#include "Output.h"

namespace campaign {
namespace {

constexpr const char* kClearLine = "\r\033[K";

}  // namespace

Progress::Progress(int total, Watcher watcher)
    : _total(total),
      _watcher(watcher),
      _isLive(isatty(STDOUT_FILENO) != 0),
      _start(std::chrono::steady_clock::now()) {}

void Progress::Report(const TestResult& result) {
  ++_done;
  if (result.outcome != Outcome::kPassed) ++_failed;
  if (_isLive) return;
  char seconds[32];
  snprintf(seconds, sizeof seconds, "%.2f", result.seconds);
  Print("[" + std::to_string(_done) + "/" + std::to_string(_total) + "] " + result.name + ": " +
        Describe(result) + ", " + seconds + " s\n");
}

void Progress::Show(int running) {
  if (!_isLive || ContinueOutput()) return;  // a terminal that pauses shows the latest line only
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - _start)
          .count();
  char line[128];
  snprintf(line, sizeof line, "[%d/%d] %d running, %d failed, %lld:%02lld", _done, _total, running,
           _failed, static_cast<long long>(elapsed / 60), static_cast<long long>(elapsed % 60));
  if (_shown == line) return;
  _shown = line;
  Print(kClearLine + _shown);
}

void Progress::Finish() {
  if (!_isLive || _shown.empty()) return;
  Print(kClearLine);
  _shown.clear();
}

bool Progress::IsSeen() const {
  return _watcher == Watcher::kRequester || !HasReaderGone();
}

}  // namespace campaign
