#include "Progress.h"

#include <stdio.h>
#include <unistd.h>

namespace campaign {
namespace {

constexpr const char* kClearLine = "\r\033[K";

}  // namespace

Progress::Progress(int total)
    : _total(total),
      _isLive(isatty(STDOUT_FILENO) != 0),
      _start(std::chrono::steady_clock::now()) {}

void Progress::Report(const TestResult& result) {
  ++_done;
  if (result.outcome != Outcome::kPassed) ++_failed;
  if (_isLive) return;
  printf("[%d/%d] %s: %s, %.2f s\n", _done, _total, result.name.c_str(), Describe(result).c_str(),
         result.seconds);
  fflush(stdout);
}

void Progress::Show(int running) {
  if (!_isLive) return;
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - _start)
          .count();
  char line[128];
  snprintf(line, sizeof line, "[%d/%d] %d running, %d failed, %lld:%02lld", _done, _total, running,
           _failed, static_cast<long long>(elapsed / 60), static_cast<long long>(elapsed % 60));
  if (_shown == line) return;
  _shown = line;
  printf("%s%s", kClearLine, line);
  fflush(stdout);
}

void Progress::Finish() {
  if (!_isLive || _shown.empty()) return;
  printf("%s", kClearLine);
  fflush(stdout);
  _shown.clear();
}

}  // namespace campaign
