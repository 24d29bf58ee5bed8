#ifndef VOR_SOCKET_BLOCKWRITER_H
#define VOR_SOCKET_BLOCKWRITER_H

#include <cstddef>
#include <memory>
#include <string_view>

#include "containers/TAIndex.h"
#include "socket/Sender.h"

class TAPerfo;
class VorListValVorString;

namespace vor {

struct Connection;

/// The sending side of a connection: the write buffer, the words that were sent and the limits of a
/// write.
///
/// Call Begin, then one or more of the operations; the connection must be open.  Results are those
/// of TASocket; the reason for a failure is in the connection.
class BlockWriter {
 public:
  /// A buffer of \a bufferSize bytes, or of the smallest size that works.
  BlockWriter(Connection& connection, int bufferSize);
  BlockWriter(const BlockWriter&) = delete;
  BlockWriter& operator=(const BlockWriter&) = delete;

  std::size_t BufferSize() const { return _bufferSize; }

  void SetCounter(TAPerfo* counter) { _counter = counter; }
  /// Adds to the counter if there is one.
  void Count(long long bytes);

  void SetLimits(int seconds, int bytesPerSecond) { _sender.SetLimits(seconds, bytesPerSecond); }

  /// Forgets the words and the rate of the connection.
  void Clear();

  /// Begins an operation of several calls.  Its time limit starts now.
  void Begin() { _sender.BeginOperation(); }

  /// Sends the buffer.
  int Flush();

  int Text(std::string_view text);
  int List(const VorListValVorString& list);
  int Binary(int n, const void* data);
  int Integer(int value);
  int String(std::string_view text);

  // For blocks that the caller fills in place.

  bool IsEmpty() const { return _pending == 0; }
  /// Returns the place for the bytes of the next block and stores their largest number, at least 1,
  /// in *room.  Returns null if the buffer cannot be sent.
  char* BeginBlock(std::size_t* room);
  /// Adds the block, of which \a size bytes are filled.
  void EndBlock(std::size_t size);
  /// Sends blocks without copying them to the buffer, which must be empty.
  int Send(iovec* pieces, std::size_t count);

 private:
  bool MustCompress() const;
  int FailForSize(long long size);
  void AppendRaw(const void* bytes, std::size_t size);
  int AppendHeader(int size);
  int AppendLong(std::string_view bytes);
  template <typename NextWord>
  int Words(int mark, NextWord next);

  Connection& _connection;
  Sender _sender;
  const std::size_t _bufferSize;
  const std::unique_ptr<char[]> _buffer;
  std::size_t _pending = 0;  // bytes in _buffer
  TAIndex _sentWords;        // with their identifiers
  TAPerfo* _counter = nullptr;
};

}  // namespace vor

#endif  // VOR_SOCKET_BLOCKWRITER_H
