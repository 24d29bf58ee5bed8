#include "process/WakeEvent.h"

#include <errno.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

#include "base/PosixFile.h"

namespace vor {

// Otherwise they would lock, and a signal handler might wait for the thread that it interrupts.
static_assert(std::atomic<bool>::is_always_lock_free);
static_assert(std::atomic<int>::is_always_lock_free);
static_assert(std::atomic<pid_t>::is_always_lock_free);

WakeEvent::~WakeEvent() {
  Close();
}

void WakeEvent::Set() noexcept {
  const int error = errno;
  _isSet = true;
  const int fd = _fd;
  if (fd >= 0 && _owner == getpid()) {
    // Fails only if so many events were not drained that the descriptor is readable for long.
    constexpr std::uint64_t kOne = 1;
    [[maybe_unused]] const ssize_t written = write(fd, &kOne, sizeof kOne);
  }
  errno = error;
}

bool WakeEvent::Take() {
  return _isSet.exchange(false);
}

int WakeEvent::Open() {
  const pid_t self = getpid();
  if (_fd >= 0 && _owner != self) Close();
  if (_fd < 0) {
    _owner = self;
    _fd = AboveStandard(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  }
  return _fd;
}

void WakeEvent::Drain() {
  std::uint64_t count;
  [[maybe_unused]] const ssize_t got = read(_fd, &count, sizeof count);
}

void WakeEvent::Close() {
  const int fd = _fd.exchange(-1);
  if (fd >= 0) close(fd);
}

}  // namespace vor
