#include "socket/SocketIo.h"

#include <poll.h>
#include <sys/socket.h>

#include <limits>

namespace vor {

ssize_t ReceiveSome(int fd, void* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = recv(fd, buffer, size, 0);
    if (count >= 0 || errno != EINTR) return count;
  }
}

Wait WaitFor(int fd, short event, Clock::time_point end) {
  using std::chrono::milliseconds;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    const auto limit = std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max());
    pollfd polled = {fd, event, 0};
    const int ready = poll(&polled, 1, static_cast<int>(limit));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return Wait::kError;
    if (ready == 0 && left > limit) continue;  // the wait exceeds the longest of poll
    if (ready == 0) {
      errno = ETIMEDOUT;
      return Wait::kTimeOut;
    }
    if ((polled.revents & POLLNVAL) != 0) {
      errno = EBADF;
      return Wait::kError;
    }
    return (polled.revents & (event | POLLHUP | POLLERR)) != 0 ? Wait::kReady : Wait::kNotReady;
  }
}

}  // namespace vor
