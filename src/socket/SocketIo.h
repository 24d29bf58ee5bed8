#ifndef VOR_SOCKET_SOCKETIO_H
#define VOR_SOCKET_SOCKETIO_H

#include <sys/types.h>

#include <cstddef>
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

/// Bytes received ahead of what was asked for, so that many small records cost one system call.
class ReceiveBuffer {
 public:
  ReceiveBuffer();

  bool IsEmpty() const { return _begin == _end; }
  /// Forgets what is held.
  void Clear() { _begin = _end = 0; }

  /// Receives \a size bytes; false if the peer closes before or an error occurs.
  bool Receive(int fd, void* out, std::size_t size);

  // For those who look at the bytes in the buffer itself.

  char* Data() { return _bytes.get() + _begin; }
  std::size_t Size() const { return _end - _begin; }
  void Consume(std::size_t size) { _begin += size; }
  /// Makes room for \a size bytes; false if there is no memory.
  bool Reserve(std::size_t size);
  /// Receives until \a size bytes are held, for which there must be room.  The bytes may move.
  bool Ensure(int fd, std::size_t size);

 private:
  std::unique_ptr<char[]> _bytes;
  std::size_t _room;
  std::size_t _begin = 0;  // of what is held, in _bytes
  std::size_t _end = 0;
};

}  // namespace vor

#endif  // VOR_SOCKET_SOCKETIO_H
