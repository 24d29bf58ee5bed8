#include "socket/SocketIo.h"

#include <errno.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace vor {

ssize_t ReceiveSome(int fd, void* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = recv(fd, buffer, size, 0);
    if (count >= 0 || errno != EINTR) return count;
  }
}

bool SendAll(int fd, iovec* pieces, std::size_t count) {
  for (;;) {
    while (count > 0 && pieces->iov_len == 0) ++pieces, --count;
    if (count == 0) return true;
    msghdr message = {};
    message.msg_iov = pieces;
    message.msg_iovlen = count;
    const ssize_t sent = sendmsg(fd, &message, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    for (auto left = static_cast<std::size_t>(sent); left > 0;) {
      const std::size_t taken = std::min(left, pieces->iov_len);
      pieces->iov_base = static_cast<char*>(pieces->iov_base) + taken;
      pieces->iov_len -= taken;
      left -= taken;
      if (pieces->iov_len == 0) ++pieces, --count;
    }
  }
}

Wait WaitForInput(int fd, int seconds) {
  using Clock = std::chrono::steady_clock;
  using std::chrono::milliseconds;
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    const auto limit = std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max());
    pollfd polled = {fd, POLLIN, 0};
    const int ready = poll(&polled, 1, static_cast<int>(limit));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return Wait::kError;
    if (ready == 0 && limit == left) return Wait::kTimeOut;
    if (ready == 0) continue;  // longer than poll can wait
    if ((polled.revents & POLLNVAL) != 0) return Wait::kError;
    return (polled.revents & (POLLIN | POLLHUP | POLLERR)) != 0 ? Wait::kReady : Wait::kNotReady;
  }
}

ReceiveBuffer::ReceiveBuffer() : _bytes(std::make_unique_for_overwrite<char[]>(kRoom)) {}

bool ReceiveBuffer::Receive(int fd, void* out, std::size_t size) {
  auto* to = static_cast<char*>(out);
  while (size > 0) {
    if (IsEmpty()) {
      // What is large goes where it is wanted at once.
      const bool isLarge = size >= kRoom;
      const ssize_t count = ReceiveSome(fd, isLarge ? to : _bytes.get(), isLarge ? size : kRoom);
      if (count <= 0) return false;
      const auto received = static_cast<std::size_t>(count);
      if (isLarge) {
        to += received;
        size -= received;
        continue;
      }
      _begin = 0;
      _end = received;
    }
    const std::size_t taken = std::min(size, _end - _begin);
    memcpy(to, _bytes.get() + _begin, taken);
    _begin += taken;
    to += taken;
    size -= taken;
  }
  return true;
}

}  // namespace vor
