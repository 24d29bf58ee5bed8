#include "socket/SocketIo.h"

#include <errno.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <limits>
#include <new>
#include <utility>

namespace vor {
namespace {

using Clock = std::chrono::steady_clock;

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

Wait WaitUntil(int fd, Clock::time_point end) {
  using std::chrono::milliseconds;
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
  if (seconds < 0) return Wait::kError;
  return WaitUntil(fd, Clock::now() + std::chrono::seconds(seconds));
}

void ReceiveBuffer::BeginRead(const ReadLimits& limits) {
  _isLate = false;
  _stall = limits.stall;
  _allowed = limits.bytes > 0 ? static_cast<std::size_t>(limits.bytes)
                              : std::numeric_limits<std::size_t>::max();
  _deadline = limits.seconds > 0 ? Clock::now() + std::chrono::seconds(limits.seconds)
                                 : Clock::time_point::max();
}

// The time-out of the socket begins anew with every byte: what bounds the whole is waited for here.
bool ReceiveBuffer::WaitInTime(int fd) {
  const Clock::time_point now = Clock::now();
  const Clock::time_point stalled =
      _stall > 0 ? now + std::chrono::seconds(_stall) : Clock::time_point::max();
  _isLate = now >= _deadline;
  if (_isLate) return false;
  const Wait wait = WaitUntil(fd, std::min(_deadline, stalled));
  _isLate = wait == Wait::kTimeOut && _deadline <= stalled;
  return wait == Wait::kReady;
}

ssize_t ReceiveBuffer::ReceiveOnce(int fd, iovec* pieces, std::size_t count) {
  if (_deadline != Clock::time_point::max() && !WaitInTime(fd)) return -1;
  msghdr message = {};
  message.msg_iov = pieces;
  message.msg_iovlen = count;
  for (;;) {
    const ssize_t received = recvmsg(fd, &message, 0);
    if (received >= 0 || errno != EINTR) return received;
  }
}

// What is missing goes where it is wanted at once, and what has arrived behind it into the buffer.
bool ReceiveBuffer::Receive(int fd, void* out, std::size_t size) {
  if (!Allows(size) || !Reserve(kRoom)) return false;
  _allowed -= size;
  auto* to = static_cast<char*>(out);
  for (;;) {
    const std::size_t taken = std::min(size, Size());
    memcpy(to, Data(), taken);
    _begin += taken;
    to += taken;
    size -= taken;
    if (size == 0) return true;
    iovec pieces[] = {{to, size}, {_bytes.get(), _room}};
    const ssize_t count = ReceiveOnce(fd, pieces, std::size(pieces));
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
  if (!IsEmpty()) memcpy(larger.get(), Data(), Size());
  _end = Size();
  _begin = 0;
  _bytes = std::move(larger);
  _room = size;
  return true;
}

bool ReceiveBuffer::Ensure(int fd, std::size_t size) {
  if (!Allows(size)) return false;
  if (Size() >= size) return true;
  memmove(_bytes.get(), Data(), Size());
  _end = Size();
  _begin = 0;
  while (_end < size) {
    iovec piece = {_bytes.get() + _end, _room - _end};
    const ssize_t count = ReceiveOnce(fd, &piece, 1);
    if (count <= 0) return false;
    _end += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace vor
