#ifndef VOR_SOCKET_SOCKETIO_H
#define VOR_SOCKET_SOCKETIO_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <limits>
#include <memory>

struct iovec;

namespace vor {

/// recv() repeated when a signal interrupts it: the bytes received, 0 when the peer has closed, -1
/// on an error.
ssize_t ReceiveSome(int fd, void* buffer, std::size_t size);

/// Sends all bytes of the pieces, which are changed on the way.  False on an error or if the peer
/// has closed.  Raises no signal.
bool SendAll(int fd, iovec* pieces, std::size_t count);

/// Writes all bytes of the pieces to a file, in the same way.
bool WritePieces(int fd, iovec* pieces, std::size_t count);

enum class Wait { kReady, kTimeOut, kError, kNotReady };

/// Waits until \a fd can be read or accepts, for at most \a seconds, however often signals
/// interrupt it.  Less than 0 seconds are an error.
Wait WaitForInput(int fd, int seconds);

/// What bounds a read, each 0 if nothing does.
struct ReadLimits {
  int seconds = 0;  // for the whole of it
  int bytes = 0;    // in all
  int stall = 0;    // seconds of silence; the socket has them as its receive time-out, too
};

/// Bytes received ahead of what was asked for, so that many small records cost one system call.
///
/// What is asked for fails if the peer closes before, if an error occurs, there is no memory or a
/// limit of the read is reached.
class ReceiveBuffer {
 public:
  bool IsEmpty() const { return _begin == _end; }
  /// Forgets what is held.
  void Clear() { _begin = _end = 0; }

  /// Begins a read, which may ask several times.  Its time runs from now on.
  void BeginRead(const ReadLimits& limits);
  /// True if \a size bytes more are within the limit of the read.
  bool Allows(std::size_t size) const { return size <= _allowed; }
  /// True if the time of the read was over before what it asked for had arrived.
  bool IsLate() const { return _isLate; }

  /// Receives \a size bytes.
  bool Receive(int fd, void* out, std::size_t size);

  // For those who look at the bytes in the buffer itself.

  char* Data() { return _bytes.get() + _begin; }
  std::size_t Size() const { return _end - _begin; }
  /// Takes bytes away that Ensure gave.
  void Consume(std::size_t size) { _begin += size, _allowed -= size; }
  /// Makes room for \a size bytes; false if there is no memory.
  bool Reserve(std::size_t size);
  /// Receives until \a size bytes are held, for which there must be room.  The bytes may move.
  bool Ensure(int fd, std::size_t size);

 private:
  using Clock = std::chrono::steady_clock;

  ssize_t ReceiveOnce(int fd, iovec* pieces, std::size_t count);
  bool WaitInTime(int fd);

  std::unique_ptr<char[]> _bytes;  // null before the first read
  std::size_t _room = 0;
  std::size_t _begin = 0;  // of what is held, in _bytes
  std::size_t _end = 0;
  std::size_t _allowed = std::numeric_limits<std::size_t>::max();  // bytes still, for this read
  Clock::time_point _deadline = Clock::time_point::max();          // of this read
  int _stall = 0;
  bool _isLate = false;
};

}  // namespace vor

#endif  // VOR_SOCKET_SOCKETIO_H
