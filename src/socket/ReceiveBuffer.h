#ifndef VOR_SOCKET_RECEIVEBUFFER_H
#define VOR_SOCKET_RECEIVEBUFFER_H

#include <errno.h>
#include <string.h>

#include <cstddef>
#include <limits>
#include <memory>

#include "socket/SocketIo.h"

namespace vor {

/// The limits of a read, each 0 for none.
struct ReadLimits {
  int seconds = 0;  // for the whole of it
  int bytes = 0;    // in all
  int stall = 0;    // seconds of silence; also the receive time-out of the socket
};

/// Receives ahead, so that many small records cost one system call.
///
/// Receive and Ensure fail at the end of the connection, after an error, if memory runs out, and at
/// a limit of the read.  Error returns the reason.
class ReceiveBuffer {
 public:
  bool IsEmpty() const { return _begin == _end; }
  /// Forgets what is held.
  void Clear() { _begin = _end = 0; }

  /// Begins a read of several requests.  Its time limit starts now.
  void BeginRead(const ReadLimits& limits);
  /// True if the read has failed because it reached its time limit.
  bool IsLate() const { return _isLate; }
  /// Why the last request failed, as a value of errno; 0 if the peer has closed.
  int Error() const { return _error; }

  /// Fails if \a size more bytes would exceed the limit of the read.
  bool Allow(std::size_t size) { return size <= _allowed || Fail(EMSGSIZE); }

  /// Receives \a size bytes.
  bool Receive(int fd, void* out, std::size_t size) {
    if (size > Size() || size > _allowed) return ReceiveMore(fd, out, size);
    memcpy(out, Data(), size);
    Consume(size);
    return true;
  }

  // Access to the bytes in the buffer itself.

  char* Data() { return _bytes.get() + _begin; }
  std::size_t Size() const { return _end - _begin; }
  /// Removes bytes that Ensure has received.
  void Consume(std::size_t size) {
    _begin += size;
    _allowed -= size;
  }
  /// Makes room for \a size bytes; false if there is no memory.
  bool Reserve(std::size_t size);
  /// Receives until \a size bytes are held, for which there must be room.  The bytes may move.
  bool Ensure(int fd, std::size_t size);

 private:
  bool Fail(int error) {
    _error = error;
    return false;
  }
  bool ReceiveMore(int fd, void* out, std::size_t size);
  std::size_t ReceiveOnce(int fd, iovec* pieces, std::size_t count);
  bool WaitInTime(int fd);

  std::unique_ptr<char[]> _bytes;  // null before the first read
  std::size_t _room = 0;
  std::size_t _begin = 0;  // of the held bytes, in _bytes
  std::size_t _end = 0;
  std::size_t _allowed =
      std::numeric_limits<std::size_t>::max();  // bytes that this read may still take
  Clock::time_point _deadline = kNever;         // of this read
  int _stall = 0;
  bool _isLate = false;
  int _error = 0;
};

}  // namespace vor

#endif  // VOR_SOCKET_RECEIVEBUFFER_H
