#include "process/TAProcessList.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "process/ChildWatch.h"
#include "process/processInfo.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int kDefaultMaxRunning = 10;
constexpr int kMsForKilled = 100;

constexpr milliseconds kNoLimit = milliseconds::max();

// Time limits follow the clock of the day, which can be set during a wait.
constexpr milliseconds kLongestWaitForTimeLimit(1000);

// Seconds as the system counts them: a command is overdue in the first second after its deadline.
bool IsOverdue(const processInfo& entry, std::time_t now) {
  return entry.deadline != 0 && entry.deadline < now;
}

// How long to wait before looking at the time limit of \a entry; never 0, since time() may lag the
// clock that is read here.
milliseconds UntilOverdue(const processInfo& entry) {
  using std::chrono::system_clock;
  if (entry.deadline == 0) return kNoLimit;
  const auto overdue = system_clock::from_time_t(entry.deadline + 1);
  const auto left = std::chrono::ceil<milliseconds>(overdue - system_clock::now());
  return std::clamp(left, milliseconds(1), kLongestWaitForTimeLimit);
}

int AsPollTime(milliseconds time) {
  return time == kNoLimit ? -1 : static_cast<int>(time.count());
}

int CountOf(std::size_t count) {
  return static_cast<int>(count);
}

}  // namespace

TAProcessList::TAProcessList() : TAProcessList(kDefaultMaxRunning) {}

TAProcessList::TAProcessList(int maxRunning)
    : _watch(std::make_unique<vor::ChildWatch>()), _maxRunning(maxRunning) {}

// Without this, the command killed last would stay in the process table, because Check is not
// called again.
TAProcessList::~TAProcessList() {
  ReapKilled();
  for (int wait = 0; wait < kMsForKilled && !_killed.empty(); ++wait) {
    std::this_thread::sleep_for(milliseconds(1));
    ReapKilled();
  }
}

int TAProcessList::Start(const VorString& command, int timeout) noexcept {
  return Start(command, timeout, VorString());
}

int TAProcessList::Start(const VorString& command, int timeout, const VorString& output) noexcept {
  auto entry = std::make_unique<processInfo>();
  entry->command = command;
  entry->timeout = timeout;
  entry->process.SetOutput(output);
  _entries.push_back(std::move(entry));
  _waiting.push_back(Size());
  return Size();
}

int TAProcessList::Check() noexcept {
  ReapKilled();
  bool changed = NoticeEnds();
  if (KillOverdue()) changed = true;
  while (MayLaunch()) {
    LaunchNext();
    changed = true;
  }
  return changed ? 1 : 0;
}

// The end of a killed child changes no result; it only has to leave the process table.
void TAProcessList::ReapKilled() {
  std::erase_if(_killed, [this](int position) {
    int ignored;
    return Entry(position).process.Check(ignored) != 0;
  });
}

bool TAProcessList::NoticeEnds() {
  bool changed = false;
  for (std::size_t index = 0; index < _running.size();) {
    processInfo& entry = Entry(_running[index]);
    if (entry.process.Check(entry.returnCode) == 0) {
      ++index;
    } else {
      entry.end = entry.process.GetEnd();
      Retire(index);
      changed = true;
    }
  }
  return changed;
}

bool TAProcessList::KillOverdue() {
  bool changed = false;
  const std::time_t now = std::time(nullptr);
  for (std::size_t index = 0; index < _running.size();) {
    processInfo& entry = Entry(_running[index]);
    if (!IsOverdue(entry, now)) {
      ++index;
      continue;
    }
    entry.end = entry.process.GetEnd();
    entry.process.KillTree();
    entry.returnCode = TimedOut;
    entry.end.kind = TAProcessEnd::TimedOut;
    _killed.push_back(_running[index]);
    Retire(index);
    changed = true;
  }
  return changed;
}

bool TAProcessList::MayLaunch() const {
  return !_waiting.empty() && NRunning() < _maxRunning;
}

// A command that cannot be started counts as running until the next Check finds that it has no
// child.
void TAProcessList::LaunchNext() {
  const int position = _waiting.back();
  _waiting.pop_back();
  processInfo& entry = Entry(position);
  entry.status = Running;
  entry.process.Start(entry.command, 0);
  entry.deadline = entry.timeout != 0 ? std::time(nullptr) + entry.timeout : 0;

  const auto place = std::upper_bound(_running.begin(), _running.end(), position, std::greater<>());
  _watch->Insert(static_cast<std::size_t>(place - _running.begin()), entry.process.ChildPid());
  _running.insert(place, position);
}

// The running command at the 0-based \a index is done.
void TAProcessList::Retire(std::size_t index) {
  Entry(_running[index]).status = Done;
  _running.erase(_running.begin() + static_cast<std::ptrdiff_t>(index));
  _watch->Remove(index);
}

int TAProcessList::WaitForChange(int limitMs) noexcept {
  const auto end = Clock::now() + milliseconds(std::max(limitMs, 0));
  if (MayLaunch()) return 1;
  while (!_running.empty()) {
    const std::time_t now = std::time(nullptr);
    milliseconds wait = kNoLimit;
    if (limitMs >= 0) {
      wait = std::max(std::chrono::ceil<milliseconds>(end - Clock::now()), milliseconds(0));
    }
    for (const int position : _running) {
      const processInfo& entry = Entry(position);
      if (IsOverdue(entry, now)) return 1;
      wait = std::min(wait, UntilOverdue(entry));
    }
    if (_watch->WaitForEnd(AsPollTime(wait))) return 1;
    if (limitMs >= 0 && Clock::now() >= end) return 0;
  }
  return 0;
}

int TAProcessList::NWaiting() const {
  return CountOf(_waiting.size());
}

int TAProcessList::NRunning() const {
  return CountOf(_running.size());
}

int TAProcessList::NDone() const {
  return CountOf(_entries.size() - _waiting.size() - _running.size());
}

int TAProcessList::Size() const {
  return CountOf(_entries.size());
}

int TAProcessList::GetReturnCode(int position) const {
  return Entry(position).returnCode;
}

int TAProcessList::GetStatus(int position) const {
  return Entry(position).status;
}

TAProcessEnd TAProcessList::GetEnd(int position) const {
  const processInfo& entry = Entry(position);
  TAProcessEnd end = entry.end;
  if (entry.status == Running) end.seconds = entry.process.GetEnd().seconds;
  return end;
}

processInfo& TAProcessList::Entry(int position) const {
  return *_entries[VorCollec::OffsetOf(position, _entries.size())];
}
