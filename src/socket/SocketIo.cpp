#include "socket/SocketIo.h"

#include <errno.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <new>
#include <utility>

namespace vor {
namespace {

constexpr std::size_t kRoom = 1 << 12;  // at first

// Calls put(pieces, count), which takes a part of the bytes, until all have gone.
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

}  // namespace

ssize_t ReceiveSome(int fd, void* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = recv(fd, buffer, size, 0);
    if (count >= 0 || errno != EINTR) return count;
  }
}

bool SendAll(int fd, iovec* pieces, std::size_t count) {
  return PutAll(pieces, count, [fd](iovec* first, std::size_t left) {
    msghdr message = {};
    message.msg_iov = first;
    message.msg_iovlen = left;
    return sendmsg(fd, &message, MSG_NOSIGNAL);
  });
}

bool WritePieces(int fd, iovec* pieces, std::size_t count) {
  return PutAll(pieces, count, [fd](iovec* first, std::size_t left) {
    return writev(fd, first, static_cast<int>(left));
  });
}

Wait WaitForInput(int fd, int seconds) {
  using Clock = std::chrono::steady_clock;
  using std::chrono::milliseconds;
  if (seconds < 0) return Wait::kError;
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    const auto limit = std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max());
    pollfd polled = {fd, POLLIN, 0};
    const int ready = poll(&polled, 1, static_cast<int>(limit));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return Wait::kError;
    if (ready == 0 && left <= limit) return Wait::kTimeOut;
    if (ready == 0) continue;  // longer than poll can wait
    if ((polled.revents & POLLNVAL) != 0) return Wait::kError;
    return (polled.revents & (POLLIN | POLLHUP | POLLERR)) != 0 ? Wait::kReady : Wait::kNotReady;
  }
}

ReceiveBuffer::ReceiveBuffer()
    : _bytes(std::make_unique_for_overwrite<char[]>(kRoom)), _room(kRoom) {}

// What is missing goes where it is wanted at once, and what has arrived behind it into the buffer.
bool ReceiveBuffer::Receive(int fd, void* out, std::size_t size) {
  auto* to = static_cast<char*>(out);
  for (;;) {
    const std::size_t taken = std::min(size, Size());
    memcpy(to, Data(), taken);
    Consume(taken);
    to += taken;
    size -= taken;
    if (size == 0) return true;
    iovec pieces[] = {{to, size}, {_bytes.get(), _room}};
    msghdr message = {};
    message.msg_iov = pieces;
    message.msg_iovlen = 2;
    const ssize_t count = recvmsg(fd, &message, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    const std::size_t direct = std::min(static_cast<std::size_t>(count), size);
    to += direct;
    size -= direct;
    _begin = 0;
    _end = static_cast<std::size_t>(count) - direct;
  }
}

bool ReceiveBuffer::Reserve(std::size_t size) {
  if (size <= _room) return true;
  std::unique_ptr<char[]> larger(new (std::nothrow) char[size]);
  if (larger == nullptr) return false;
  memcpy(larger.get(), Data(), Size());
  _end = Size();
  _begin = 0;
  _bytes = std::move(larger);
  _room = size;
  return true;
}

bool ReceiveBuffer::Ensure(int fd, std::size_t size) {
  if (Size() >= size) return true;
  memmove(_bytes.get(), Data(), Size());
  _end = Size();
  _begin = 0;
  while (_end < size) {
    const ssize_t count = ReceiveSome(fd, _bytes.get() + _end, _room - _end);
    if (count <= 0) return false;
    _end += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace vor
