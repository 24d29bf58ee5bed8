#include "process/ChildWatch.h"

#include <errno.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>

namespace vor {
namespace {

constexpr int kIntervalMs = 10;  // between two looks at a child that has no descriptor

// Most processes may open 1,024 descriptors; the greater part is left to the tool.
constexpr std::size_t kMostDescriptors = 256;

bool HasEnded(pid_t pid) {
  siginfo_t info = {};
  const int flags = WEXITED | WNOHANG | WNOWAIT;
  if (pid <= 0 || waitid(P_PID, static_cast<id_t>(pid), &info, flags) != 0) return true;
  return info.si_pid != 0;
}

// Close-on-exec, as the system makes them.
FileDescriptor OpenEndOf(pid_t pid) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

}  // namespace

void ChildWatch::Insert(std::size_t index, pid_t pid) {
  _children.insert(_children.begin() + static_cast<std::ptrdiff_t>(index),
                   Child{pid, FileDescriptor()});
}

void ChildWatch::Remove(std::size_t index) {
  _children.erase(_children.begin() + static_cast<std::ptrdiff_t>(index));
}

// Prepares the wait for one child.  True if it has ended already.
bool ChildWatch::Watch(Child& child) {
  if (!child.end.IsOpen() && _polled.size() < kMostDescriptors) child.end = OpenEndOf(child.pid);
  if (!child.end.IsOpen()) return HasEnded(child.pid);
  _polled.push_back({child.end.Get(), POLLIN, 0});
  return false;
}

bool ChildWatch::WaitForEnd(int milliseconds) {
  _polled.clear();
  for (Child& child : _children) {
    if (Watch(child)) return true;
  }
  const bool allPolled = _polled.size() == _children.size();
  const bool longer = milliseconds < 0 || milliseconds > kIntervalMs;
  const int limit = longer && !allPolled ? kIntervalMs : milliseconds;
  const int ready = poll(_polled.data(), _polled.size(), limit);
  // A limit of descriptors that was lowered below those held, or no memory: without them then.
  if (ready < 0 && errno != EINTR) return WaitWithoutDescriptors(milliseconds);
  return ready > 0;
}

bool ChildWatch::WaitWithoutDescriptors(int milliseconds) {
  for (Child& child : _children) child.end.Reset(-1);
  const bool longer = milliseconds < 0 || milliseconds > kIntervalMs;
  poll(nullptr, 0, longer ? kIntervalMs : milliseconds);
  return std::any_of(_children.begin(), _children.end(),
                     [](const Child& child) { return HasEnded(child.pid); });
}

}  // namespace vor
