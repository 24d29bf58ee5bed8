#include "socket/Sender.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

namespace vor {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr double kGrace = 1;  // seconds of waiting allowed before the peer takes anything
constexpr double kLongest =
    366.0 * 24 * 60 * 60;  // seconds of a wait; keeps its end within the range of the clock

// poll() reports a socket as ready when a third of its buffer is free.  A slow peer makes less room
// long before that, and sendmsg() finds it.
constexpr auto kLook = std::chrono::milliseconds(250);

}  // namespace

void Sender::SetLimits(int seconds, int bytesPerSecond) {
  _seconds = std::max(seconds, 0);
  _bytesPerSecond = std::max(bytesPerSecond, 0);
  Clear();
}

void Sender::Clear() {
  _sent = _waited = 0;
}

bool Sender::Send(int fd, int stall, iovec* pieces, std::size_t count) {
  return PutAll(pieces, count,
                [&](iovec* first, std::size_t left) { return SendSome(fd, stall, first, left); });
}

ssize_t Sender::SendSome(int fd, int stall, iovec* pieces, std::size_t count) {
  msghdr message = {};
  message.msg_iov = pieces;
  message.msg_iovlen = count;
  const bool isLimited = _deadline != kNever || _bytesPerSecond > 0;
  const int flags = MSG_NOSIGNAL | (isLimited ? MSG_DONTWAIT : 0);
  const Clock::time_point start = Clock::now();
  const Clock::time_point stalled = stall > 0 ? start + std::chrono::seconds(stall) : kNever;
  for (Clock::time_point now = start; now < _deadline; now = Clock::now()) {
    const ssize_t sent = sendmsg(fd, &message, flags);
    if (sent >= 0) _sent += static_cast<double>(sent);
    if (sent >= 0 || errno != EAGAIN) return sent;
    if (!isLimited) break;  // the send time-out of the socket
    if (!WaitInTime(fd, stalled)) return -1;
  }
  errno = ETIMEDOUT;
  return -1;
}

// Waits until the socket is ready, but at most for kLook.  Returns false with errno set at a limit
// or after an error.  All waits together may last kGrace seconds and one second more for each
// _bytesPerSecond bytes sent.
bool Sender::WaitInTime(int fd, Clock::time_point stalled) {
  const Clock::time_point start = Clock::now();
  Clock::time_point end = std::min(_deadline, stalled);
  if (_bytesPerSecond > 0) {
    const double left = std::min(kGrace + _sent / _bytesPerSecond - _waited, kLongest);
    end = std::min(end, start + std::chrono::duration_cast<Clock::duration>(Seconds(left)));
  }
  if (start >= end) {
    errno = ETIMEDOUT;
    return false;
  }
  const Wait wait = WaitFor(fd, POLLOUT, std::min(end, start + kLook));
  _waited += Seconds(Clock::now() - start).count();
  return wait != Wait::kError;
}

}  // namespace vor
