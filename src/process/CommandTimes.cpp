#include "process/CommandTimes.h"

#include <algorithm>

#include "process/processInfo.h"

namespace vor {
namespace {

using std::chrono::milliseconds;
using Clock = processInfo::Clock;

// The clock of the day can be set during a wait.
constexpr milliseconds kLongestWaitForSecond(1000);

}  // namespace

void BeginTimeLimit(processInfo& entry) {
  const Moment now;
  if (entry.timeout != 0) entry.deadline = now.second + entry.timeout;
  if (entry.limitMs > 0) entry.stopTime = now.precise + milliseconds(entry.limitMs);
}

void BeginGrace(processInfo& entry, int milliseconds) {
  entry.isInGrace = true;
  entry.deadline = 0;
  entry.stopTime = Clock::now() + std::chrono::milliseconds(milliseconds);
}

bool IsOverdue(const processInfo& entry, const Moment& now) {
  return (entry.deadline != 0 && entry.deadline < now.second) || entry.stopTime <= now.precise;
}

milliseconds UntilOverdue(const processInfo& entry, const Moment& now) {
  using std::chrono::ceil;
  using std::chrono::system_clock;
  milliseconds left = kNoTimeLimit;
  if (entry.deadline != 0) {
    const auto overdue = system_clock::from_time_t(entry.deadline + 1);
    left = std::min(ceil<milliseconds>(overdue - system_clock::now()), kLongestWaitForSecond);
  }
  if (entry.stopTime != Clock::time_point::max()) {
    left = std::min(left, ceil<milliseconds>(entry.stopTime - now.precise));
  }
  return std::max(left, milliseconds(1));  // time() may lag the clock of the day that is read here
}

}  // namespace vor
