#include "process/ChildWatch.h"

#include <errno.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>

#include "process/WakeEvent.h"

// A wait must cost next to nothing while nothing happens, and it must leave the tool alone: no
// handler of SIGCHLD, no thread, and no wait that reaps other children.  That leaves poll on
// process descriptors.
//
// Descriptors are scarce: the tool needs them for its files and its children's output.  So all
// watches of the process together hold at most a quarter of the limit.  The children beyond that
// are checked at intervals that grow while nothing happens.  One waitid checks all of them at once.
// It misses children that the system or another waiter has reaped, and it repeats one end if the
// tool never reaps one of its other children.  So each time a few children, in turn, are also
// checked by themselves.
//
// A process descriptor does not show that a child has asked to be traced and stops.  So children
// with a descriptor are checked in the same way once a second.

namespace vor {
namespace {

using std::chrono::ceil;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int kShortestIntervalMs = 10;
constexpr int kLongestIntervalMs = 100;
constexpr int kTracedIntervalMs = 1000;
constexpr std::size_t kLooksInTurn = 16;

constexpr int kLook = WEXITED | WNOHANG | WNOWAIT;

constexpr rlim_t kShareOfLimit = 4;

constinit std::atomic<rlim_t> held = 0;  // descriptors, by all watches of this process

bool HasEnded(pid_t pid) {
  siginfo_t info = {};
  if (pid <= 0 || waitid(P_PID, static_cast<id_t>(pid), &info, kLook) != 0) return true;
  return info.si_pid != 0;
}

bool TakeShare() {
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  if (held.fetch_add(1) < limit.rlim_cur / kShareOfLimit) return true;
  --held;
  return false;
}

// At least 0; -1 for no limit.
int MsUntil(Clock::time_point end, bool isLimited) {
  if (!isLimited) return -1;
  return std::max(static_cast<int>(ceil<milliseconds>(end - Clock::now()).count()), 0);
}

// Less than 0 milliseconds for no limit.
int Poll(std::vector<pollfd>& polled, int limitMs, const sigset_t* mask) {
  constexpr int kMsPerSecond = 1000;
  constexpr long kNsPerMs = 1'000'000;
  const timespec limit = {limitMs / kMsPerSecond, limitMs % kMsPerSecond * kNsPerMs};
  return ppoll(polled.data(), polled.size(), limitMs < 0 ? nullptr : &limit, mask);
}

}  // namespace

FileDescriptor OpenProcess(pid_t pid) {
  return FileDescriptor(AboveStandard(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))));
}

ChildWatch::~ChildWatch() {
  for (Child& child : _children) Close(child);
}

void ChildWatch::Insert(std::size_t index, pid_t pid) {
  _children.insert(_children.begin() + static_cast<std::ptrdiff_t>(index), Child{.pid = pid});
}

void ChildWatch::Remove(std::size_t index) {
  const auto child = _children.begin() + static_cast<std::ptrdiff_t>(index);
  Close(*child);
  _children.erase(child);
}

void ChildWatch::Ignore(std::size_t index) {
  Close(_children[index]);
  _children[index].isIgnored = true;
}

bool ChildWatch::Open(Child& child) {
  if (!TakeShare()) return false;
  child.process = OpenProcess(child.pid);
  if (!child.process.IsOpen()) --held;
  return child.process.IsOpen();
}

void ChildWatch::Close(Child& child) {
  if (child.process.IsOpen()) --held;
  child.process.Reset(-1);
}

// Prepares a wait.  Returns whether a child that is new here has ended already; it is checked after
// its descriptor was opened, because if the child was already reaped, the descriptor may be that of
// another process.
bool ChildWatch::Prepare() {
  _polled.assign(1, {-1, POLLIN, 0});
  _watched.clear();
  _allPolled = true;
  bool mayOpen = true;
  for (Child& child : _children) {
    if (child.isIgnored) continue;
    if (!child.process.IsOpen() && mayOpen) {
      mayOpen = Open(child);
      if (HasEnded(child.pid)) return true;
    }
    _watched.push_back(child.pid);
    if (child.process.IsOpen()) {
      _polled.push_back({child.process.Get(), POLLIN, 0});
    } else {
      _allPolled = false;
    }
  }
  return false;
}

// Looks for an end, or a stop of a traced child, without a descriptor.
bool ChildWatch::HasWatchedEnded() {
  if (_watched.empty()) return false;
  siginfo_t info = {};
  if (waitid(P_ALL, 0, &info, kLook) != 0) return true;  // there are no children at all
  if (std::find(_watched.begin(), _watched.end(), info.si_pid) != _watched.end()) return true;
  for (std::size_t look = 0; look < std::min(kLooksInTurn, _watched.size()); ++look) {
    if (HasEnded(_watched[_next++ % _watched.size()])) return true;
  }
  return false;
}

bool ChildWatch::HasPolledEnded() const {
  return std::any_of(_polled.begin() + 1, _polled.end(),
                     [](const pollfd& polled) { return polled.revents != 0; });
}

bool ChildWatch::WaitForEnd(int limitMs) {
  return Wait(limitMs, nullptr, nullptr) == kEnded;
}

ChildWatch::Outcome ChildWatch::Wait(int limitMs, WakeEvent& wake, const sigset_t& mask) {
  return Wait(limitMs, &wake, &mask);
}

// Without a descriptor for the event, that is checked at intervals, too.
ChildWatch::Outcome ChildWatch::Wait(int limitMs, WakeEvent* wake, const sigset_t* mask) {
  const auto end = Clock::now() + milliseconds(std::max(limitMs, 0));
  if (Prepare()) return kEnded;
  if (wake != nullptr && limitMs != 0) _polled.front().fd = wake->Open();
  const bool isComplete = _allPolled && (wake == nullptr || _polled.front().fd >= 0);
  const int longest = isComplete ? kTracedIntervalMs : kLongestIntervalMs;
  int interval = isComplete ? longest : kShortestIntervalMs;
  for (;; interval = std::min(2 * interval, longest)) {
    if (wake != nullptr && wake->Take()) return kWoken;
    if (!_allPolled && HasWatchedEnded()) return kEnded;
    const int left = MsUntil(end, limitMs >= 0);
    const bool isLast = left >= 0 && left <= interval;
    const int ready = Poll(_polled, isLast ? left : interval, mask);
    if (ready < 0) {
      if (errno == EINTR) return kWoken;
      RecoverFromPoll();
      return kNothing;
    }
    if (HasPolledEnded()) return kEnded;
    if (ready > 0) {
      wake->Drain();  // the event may have been taken before; otherwise it is found set above
    } else if (isLast || _allPolled) {
      if (HasWatchedEnded()) return kEnded;
      if (isLast) return kNothing;
    }
  }
}

// The limit of descriptors is now below the number held, or there is no memory.
void ChildWatch::RecoverFromPoll() {
  for (Child& child : _children) Close(child);
  poll(nullptr, 0, kShortestIntervalMs);
}

}  // namespace vor
