#include "process/TAProcessList.h"

#include <signal.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

#include "process/ChildWatch.h"
#include "process/CommandTimes.h"
#include "process/Container.h"
#include "process/UndisturbedScope.h"
#include "process/WakeEvent.h"
#include "process/processInfo.h"

// A command that reaches its time limit or is cancelled is killed and is done, even if its process
// ends and is reaped later.  With a grace time it gets SIGTERM first and stays among the running
// ones.  Its own process is not reaped before its others have ended or been killed: until then its
// number, and that of its process group, cannot be reused, and what still runs does not count as
// left behind.

namespace {

using std::chrono::ceil;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int kDefaultMaxRunning = 10;

// The return code of a command with options that could not be started; like that of a child in
// which the exec fails.
constexpr int kCodeOfNotStarted = 1;

constexpr milliseconds kForKilled(100);
constexpr milliseconds kBetweenLoads(1000);

// Between two looks for what is left of a command whose grace time runs.
constexpr milliseconds kFirstInterval(10);
constexpr milliseconds kLongestInterval(100);

int AsPollTime(milliseconds time) {
  return time == vor::kNoTimeLimit ? -1 : static_cast<int>(time.count());
}

milliseconds Until(Clock::time_point end) {
  return std::max(ceil<milliseconds>(end - Clock::now()), milliseconds(0));
}

// Whether the load average of the last minute is at most \a most, or not known.
bool IsLoadAtMost(double most) {
  double load;
  return getloadavg(&load, 1) < 1 || load <= most;
}

int CountOf(std::size_t count) {
  return static_cast<int>(count);
}

// Completes what is known of a command that was stopped, now that its process was reaped.
void TakeUsage(TAProcessEnd& end, const TAProcessEnd& reaped) {
  end.userSeconds = reaped.userSeconds;
  end.systemSeconds = reaped.systemSeconds;
  end.peakMemoryKiB = reaped.peakMemoryKiB;
  end.leftBehind = reaped.leftBehind;
}

// The command has ended, or was killed, after \a seconds.
void NoteStopped(processInfo& entry, double seconds) {
  entry.end = TAProcessEnd();
  entry.end.kind = entry.reason;
  entry.end.seconds = seconds;
  const bool timedOut = entry.reason == TAProcessEnd::TimedOut;
  entry.returnCode = timedOut ? TAProcessList::TimedOut : TAProcessList::Cancelled;
}

}  // namespace

TAProcessList::TAProcessList() : TAProcessList(kDefaultMaxRunning) {}

TAProcessList::TAProcessList(int maxRunning)
    : _watch(std::make_unique<vor::ChildWatch>()),
      _wake(std::make_unique<vor::WakeEvent>()),
      _maxRunning(maxRunning) {}

// Without this, the command killed last would stay in the process table, because Check is not
// called again.
TAProcessList::~TAProcessList() {
  AwaitKilled();
}

int TAProcessList::Start(const VorString& command, int timeout) noexcept {
  return Start(command, timeout, VorString());
}

int TAProcessList::Start(const VorString& command, int timeout, const VorString& output) noexcept {
  auto entry = std::make_unique<processInfo>();
  entry->command = command;
  entry->timeout = timeout;
  entry->process.SetOutput(output);
  return Add(std::move(entry));
}

int TAProcessList::Start(const VorString& command, const TAProcessOptions& options,
                         int limitMs) noexcept {
  auto entry = std::make_unique<processInfo>();
  entry->command = command;
  entry->options = std::make_unique<const TAProcessOptions>(options);
  entry->limitMs = limitMs;
  return Add(std::move(entry));
}

int TAProcessList::Start(const VorListValVorString& arguments, const TAProcessOptions& options,
                         int limitMs) noexcept {
  auto entry = std::make_unique<processInfo>();
  entry->arguments = std::make_unique<const VorListValVorString>(arguments);
  entry->options = std::make_unique<const TAProcessOptions>(options);
  entry->limitMs = limitMs;
  return Add(std::move(entry));
}

int TAProcessList::Add(std::unique_ptr<processInfo> entry) {
  _entries.push_back(std::move(entry));
  _waiting.push_back(Size());
  return Size();
}

void TAProcessList::SetOrder(Order order) {
  _order = order;
}

void TAProcessList::SetMaxLoad(double load) {
  _maxLoad = load;
}

void TAProcessList::SetGrace(int milliseconds) {
  _graceMs = milliseconds;
}

void TAProcessList::SetContainment(TAContainment containment) {
  _containment = containment;
}

void TAProcessList::SetLeavesNobody(bool leavesNobody) {
  _leavesNobody = leavesNobody;
}

const char* TAProcessList::ContainmentInUse() const {
  return vor::Container::MeansOf(_containment);
}

void TAProcessList::Cancel(int position) noexcept {
  const int before = NDone();
  const int status = GetStatus(position);
  if (status == Waiting) {
    CancelWaiting(position);
    _waiting.erase(std::lower_bound(_waiting.begin(), _waiting.end(), position));
  } else if (status == Running) {
    const auto place =
        std::lower_bound(_running.begin(), _running.end(), position, std::greater<>());
    CancelRunning(static_cast<std::size_t>(place - _running.begin()));
    AwaitKilled();
  }
  if (NDone() != before) _cancelled = true;
}

void TAProcessList::CancelAll() noexcept {
  const int before = NDone();
  for (const int position : _waiting) CancelWaiting(position);
  _waiting.clear();
  for (std::size_t index = 0; index < _running.size();) {
    if (!CancelRunning(index)) ++index;
  }
  AwaitKilled();
  if (NDone() != before) _cancelled = true;
}

void TAProcessList::CancelWaiting(int position) {
  processInfo& entry = Entry(position);
  entry.status = Done;
  entry.reason = TAProcessEnd::Cancelled;
  NoteStopped(entry, 0);
}

// Returns whether the running command at \a index is done now.
bool TAProcessList::CancelRunning(std::size_t index) {
  if (HasEnded(index)) {
    Retire(index);
    return true;
  }
  const processInfo& entry = Entry(_running[index]);
  if (entry.isInGrace && _graceMs > 0) return false;
  return Stop(index, vor::IsOverdue(entry, {}) ? TAProcessEnd::TimedOut : TAProcessEnd::Cancelled);
}

int TAProcessList::Check() noexcept {
  ReapKilled();
  bool changed = std::exchange(_cancelled, false);
  if (NoticeEnds()) changed = true;
  if (StopOverdue()) changed = true;
  while (MayLaunch()) {
    LaunchNext();
    changed = true;
  }
  return changed ? 1 : 0;
}

bool TAProcessList::NoticeEnds() {
  bool changed = false;
  for (std::size_t index = 0; index < _running.size();) {
    if (!HasEnded(index)) {
      ++index;
    } else {
      Retire(index);
      changed = true;
    }
  }
  return changed;
}

// Whether the running command at \a index has ended, in its grace time with all its processes.
// If so, stores how.
bool TAProcessList::HasEnded(std::size_t index) {
  processInfo& entry = Entry(_running[index]);
  if (entry.isInGrace) {
    if (!entry.rootEnded && entry.process.HasEnded()) {
      entry.rootEnded = true;
      _watch->Ignore(index);
    }
    if (!entry.rootEnded || entry.process.Contained().HasLiving()) return false;
  }
  if (entry.process.Check(entry.returnCode) == 0) return false;
  const TAProcessEnd end = entry.process.GetEnd();
  if (entry.isInGrace) {
    NoteStopped(entry, end.seconds);
    TakeUsage(entry.end, end);
    return true;
  }
  entry.end = end;
  if (entry.options != nullptr && end.kind == TAProcessEnd::NotStarted) {
    entry.returnCode = kCodeOfNotStarted;
  }
  return true;
}

bool TAProcessList::StopOverdue() {
  bool changed = false;
  const vor::Moment now;
  for (std::size_t index = 0; index < _running.size();) {
    if (vor::IsOverdue(Entry(_running[index]), now) && Stop(index, TAProcessEnd::TimedOut)) {
      changed = true;
    } else {
      ++index;
    }
  }
  if (changed) AwaitKilled();
  return changed;
}

// The running command at \a index is to end, or its grace time is over.  Returns whether it was
// killed and is done now; otherwise its grace time has begun.
bool TAProcessList::Stop(std::size_t index, TAProcessEnd::Kind reason) {
  processInfo& entry = Entry(_running[index]);
  if (!entry.isInGrace) entry.reason = reason;
  if (entry.isInGrace || _graceMs <= 0) {
    Kill(index);
    return true;
  }
  vor::BeginGrace(entry, _graceMs);
  entry.process.Contained().SignalAll(SIGTERM);
  return false;
}

void TAProcessList::Kill(std::size_t index) {
  const int position = _running[index];
  processInfo& entry = Entry(position);
  NoteStopped(entry, entry.process.GetEnd().seconds);
  entry.process.KillTree();
  // Those that got SIGTERM, also if they are no descendants any more.
  if (entry.isInGrace) entry.process.Contained().SignalAll(SIGKILL);
  _killed.push_back(position);
  Retire(index);
}

// Reaps the killed children, so that what they have used is known, and waits for them if it does
// not take long.  All were killed before, so they end at the same time.
void TAProcessList::AwaitKilled() {
  const auto end = Clock::now() + kForKilled;
  for (ReapKilled(); !_killed.empty() && Clock::now() < end; ReapKilled()) {
    vor::ChildWatch watch;
    for (const int position : _killed) watch.Insert(0, Entry(position).process.ChildPid());
    watch.WaitForEnd(AsPollTime(Until(end)));
  }
}

void TAProcessList::ReapKilled() {
  std::erase_if(_killed, [this](int position) {
    processInfo& entry = Entry(position);
    int ignored;
    if (entry.process.Check(ignored) == 0) return false;
    TakeUsage(entry.end, entry.process.GetEnd());
    return true;
  });
}

bool TAProcessList::MayLaunch() const {
  if (_waiting.empty() || NRunning() >= _maxRunning) return false;
  return _running.empty() || _maxLoad <= 0 || IsLoadAtMost(_maxLoad);
}

// A command that cannot be started counts as running until the next Check finds that it has no
// child.
void TAProcessList::LaunchNext() {
  const bool fromEnd = _order == LastAddedFirst;
  const int position = fromEnd ? _waiting.back() : _waiting.front();
  fromEnd ? _waiting.pop_back() : _waiting.pop_front();
  processInfo& entry = Entry(position);
  entry.status = Running;
  entry.process.SetContainment(_containment);
  entry.process.SetLeavesNobody(_leavesNobody);
  if (entry.options == nullptr) {
    entry.process.Start(entry.command, 0);
  } else if (entry.arguments == nullptr) {
    entry.process.Start(entry.command, *entry.options);
  } else {
    entry.process.Start(*entry.arguments, *entry.options);
  }
  vor::BeginTimeLimit(entry);

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

// Signals are blocked except during the wait itself, so that each ends it.
int TAProcessList::WaitForChange(int limitMs) noexcept {
  const vor::UndisturbedScope scope;
  const auto end = Clock::now() + milliseconds(std::max(limitMs, 0));
  if (_wake->Take()) return 0;
  if (_cancelled) return 1;
  for (milliseconds interval = kFirstInterval;;
       interval = std::min(2 * interval, kLongestInterval)) {
    if (MayLaunch()) return 1;
    if (_running.empty()) return 0;
    milliseconds wait = limitMs < 0 ? vor::kNoTimeLimit : Until(end);
    const vor::Moment now;
    for (const int position : _running) {
      processInfo& entry = Entry(position);
      if (vor::IsOverdue(entry, now)) return 1;
      wait = std::min(wait, vor::UntilOverdue(entry, now));
      if (!entry.rootEnded) continue;
      if (!entry.process.Contained().HasLiving()) return 1;
      wait = std::min(wait, interval);
    }
    if (!_waiting.empty() && NRunning() < _maxRunning) wait = std::min(wait, kBetweenLoads);
    switch (_watch->Wait(AsPollTime(wait), *_wake, scope.Mask())) {
      case vor::ChildWatch::kEnded:
        return 1;
      case vor::ChildWatch::kWoken:
        return 0;
      case vor::ChildWatch::kNothing:
        if (limitMs >= 0 && Clock::now() >= end) return 0;
    }
  }
}

void TAProcessList::Wake() noexcept {
  _wake->Set();
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

int TAProcessList::GetPid(int position) const {
  return Entry(position).process.ChildPid();
}

processInfo& TAProcessList::Entry(int position) const {
  return *_entries[VorCollec::OffsetOf(position, _entries.size())];
}
