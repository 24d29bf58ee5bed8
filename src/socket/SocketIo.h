#ifndef VOR_SOCKET_SOCKETIO_H
#define VOR_SOCKET_SOCKETIO_H

#include <errno.h>
#include <sys/types.h>
#include <sys/uio.h>

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace vor {

/// recv(), repeated if a signal interrupts it.  Returns the number of bytes, 0 if the peer has
/// closed, -1 with errno set after an error.
ssize_t ReceiveSome(int fd, void* buffer, std::size_t size);

/// Calls put(pieces, count), which takes some of the bytes as writev() does, until all are taken.
/// Changes the pieces meanwhile.  Returns false with errno set after an error.
template <typename Put>
bool PutAll(iovec* pieces, std::size_t count, Put put) {
  for (;;) {
    while (count > 0 && pieces->iov_len == 0) ++pieces, --count;
    if (count == 0) return true;
    const ssize_t taken = put(pieces, count);
    if (taken < 0 && errno == EINTR) continue;
    if (taken <= 0) return false;
    for (auto left = static_cast<std::size_t>(taken); left > 0;) {
      const std::size_t part = std::min(left, pieces->iov_len);
      pieces->iov_base = static_cast<char*>(pieces->iov_base) + part;
      pieces->iov_len -= part;
      left -= part;
      if (pieces->iov_len == 0) ++pieces, --count;
    }
  }
}

using Clock = std::chrono::steady_clock;

/// The end of a wait without limit.
constexpr Clock::time_point kNever = Clock::time_point::max();

enum class Wait { kReady, kTimeOut, kError, kNotReady };

/// Waits until \a fd is ready for \a event, POLLIN or POLLOUT, or has an error, but at most until
/// \a end.  Signals do not end the wait.  kTimeOut and kError set errno.
Wait WaitFor(int fd, short event, Clock::time_point end);

}  // namespace vor

#endif  // VOR_SOCKET_SOCKETIO_H
