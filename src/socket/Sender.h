#ifndef VOR_SOCKET_SENDER_H
#define VOR_SOCKET_SENDER_H

#include <cstddef>

#include "socket/SocketIo.h"

namespace vor {

/// Sends bytes within the limits of TASocket::SetWriteLimits.
class Sender {
 public:
  /// Sets the limits, 0 for none.  The rate is measured from now on.
  void SetLimits(int seconds, int bytesPerSecond);

  /// Measures the rate anew, for another connection.
  void Clear();
  /// Begins an operation of several calls of Send.  Its time limit starts now.
  void BeginOperation() {
    _deadline = _seconds > 0 ? Clock::now() + std::chrono::seconds(_seconds) : kNever;
  }

  /// Sends all bytes of \a pieces, and changes \a pieces meanwhile.  Returns false with errno set
  /// after an error, at a limit, or if the peer takes nothing for \a stall seconds; 0 for no such
  /// limit.  The send time-out of the socket must be \a stall, too.  Raises no SIGPIPE.
  bool Send(int fd, int stall, iovec* pieces, std::size_t count);

 private:
  ssize_t SendSome(int fd, int stall, iovec* pieces, std::size_t count);
  bool WaitInTime(int fd, Clock::time_point stalled);

  int _seconds = 0;
  int _bytesPerSecond = 0;
  Clock::time_point _deadline = kNever;  // of the operation
  double _sent = 0;                      // bytes that count for the rate
  double _waited = 0;                    // seconds that count for the rate
};

}  // namespace vor

#endif  // VOR_SOCKET_SENDER_H
