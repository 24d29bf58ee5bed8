#ifndef VOR_SOCKET_BLOCKREADER_H
#define VOR_SOCKET_BLOCKREADER_H

#include <cstddef>
#include <string>

#include "socket/ReceiveBuffer.h"
#include "socket/ReceivedWords.h"

class TAPerfo;
class VorListValVorString;
class VorString;

namespace vor {

struct Connection;

/// The receiving side of a connection: the bytes received ahead, the words of the peer and the
/// limits of a read.
///
/// Call Begin, then one of the reads, then End with its result.  Results are those of TASocket; the
/// reason for a failure is in the connection.
class BlockReader {
 public:
  explicit BlockReader(Connection& connection) : _connection(connection) {}
  BlockReader(const BlockReader&) = delete;
  BlockReader& operator=(const BlockReader&) = delete;

  void SetCounter(TAPerfo* counter) { _counter = counter; }
  /// Sets the limits of each read; 0 for none.
  void SetLimits(int seconds, int bytes);

  /// Forgets the bytes and the words of the connection.
  void Clear();

  /// Begins a read.  Waits for its first byte if \a timeout is at least 1, for that many seconds.
  int Begin(int timeout);
  /// Ends a read.  Returns \a result, or 2 if the read failed because it reached its time limit.
  int End(int result);

  int Text(VorString& text);
  int List(VorListValVorString& list);
  /// *data is from malloc and belongs to the caller.
  int Binary(int* n, void** data);
  int Integer(int& value);
  int String(VorString& text);

  /// For reads that use the bytes themselves.
  ReceiveBuffer& Buffer() { return _buffer; }

 private:
  int FailForTime();
  int FailShort(const char* message);
  int WaitForStart(int timeout);
  bool Receive(void* out, std::size_t size);
  bool ReceiveInto(std::string& text, std::size_t size);
  int Size(int& size, const char* message);
  std::size_t LargestText() const;
  int PlainText(int size, std::string& text);
  int StringUpTo(std::size_t largest, std::string& text);
  int Definitions(std::size_t room);
  template <typename Use>
  int Words(Use use);

  Connection& _connection;
  ReceiveBuffer _buffer;
  ReceivedWords _words;
  TAPerfo* _counter = nullptr;
  int _seconds = 0;  // limits of a read
  int _bytes = 0;
};

}  // namespace vor

#endif  // VOR_SOCKET_BLOCKREADER_H
