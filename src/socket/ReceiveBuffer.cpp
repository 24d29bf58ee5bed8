#include "socket/ReceiveBuffer.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace vor {
namespace {

constexpr std::size_t kRoom = 1 << 12;  // at first

}  // namespace

void ReceiveBuffer::BeginRead(const ReadLimits& limits) {
  _isLate = false;
  _stall = limits.stall;
  _allowed = limits.bytes > 0 ? static_cast<std::size_t>(limits.bytes)
                              : std::numeric_limits<std::size_t>::max();
  _deadline = limits.seconds > 0 ? Clock::now() + std::chrono::seconds(limits.seconds) : kNever;
}

// The receive time-out of the socket begins anew with every byte, so the limit of the whole read is
// kept here.
bool ReceiveBuffer::WaitInTime(int fd) {
  const Clock::time_point now = Clock::now();
  const Clock::time_point stalled = _stall > 0 ? now + std::chrono::seconds(_stall) : kNever;
  _isLate = now >= _deadline;
  if (_isLate) return Fail(ETIMEDOUT);
  const Wait wait = WaitFor(fd, POLLIN, std::min(_deadline, stalled));
  _isLate = wait == Wait::kTimeOut && _deadline <= stalled;
  return wait == Wait::kReady || Fail(errno);
}

// Returns the bytes received; 0 after a failure.
std::size_t ReceiveBuffer::ReceiveOnce(int fd, iovec* pieces, std::size_t count) {
  if (_deadline != kNever && !WaitInTime(fd)) return 0;
  msghdr message = {};
  message.msg_iov = pieces;
  message.msg_iovlen = count;
  for (;;) {
    const ssize_t received = recvmsg(fd, &message, 0);
    if (received > 0) return static_cast<std::size_t>(received);
    if (received < 0 && errno == EINTR) continue;
    const bool isStalled = received < 0 && errno == EAGAIN;
    _error = received == 0 ? 0 : isStalled ? ETIMEDOUT : errno;
    return 0;
  }
}

// Receives the missing bytes right into their place, and bytes after them into the buffer.
bool ReceiveBuffer::ReceiveMore(int fd, void* out, std::size_t size) {
  if (!Allow(size)) return false;
  if (!Reserve(kRoom)) return Fail(ENOMEM);
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
    const std::size_t count = ReceiveOnce(fd, pieces, std::size(pieces));
    if (count == 0) return false;
    const std::size_t direct = std::min(count, size);
    to += direct;
    size -= direct;
    _begin = 0;
    _end = count - direct;
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
  if (!Allow(size)) return false;
  if (Size() >= size) return true;
  memmove(_bytes.get(), Data(), Size());
  _end = Size();
  _begin = 0;
  while (_end < size) {
    iovec piece = {_bytes.get() + _end, _room - _end};
    const std::size_t count = ReceiveOnce(fd, &piece, 1);
    if (count == 0) return false;
    _end += count;
  }
  return true;
}

}  // namespace vor
