#ifndef VOR_SOCKET_TASOCKET_H
#define VOR_SOCKET_TASOCKET_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "base/Export.h"
#include "base/VorString.h"
#include "containers/TAIndex.h"

class TAPerfo;
class VorListValVorString;
namespace vor {
class ReceiveBuffer;
class ReceivedWords;
}  // namespace vor

/// One end of a TCP connection (IPv4) between two tools, or a listening server socket that hands
/// connections to other TASockets.
///
/// A client opens the connection, a server accepts it; from then on both ends are alike:
///
///     TASocket server, peer;              TASocket client;
///     server.OpenServer(4711);            client.OpenClient("host", 4711);
///     server.GetQuery(60, query, peer);   client.PutBlock("the query");
///     peer.PutBlock(answer);              client.GetBlock(answer, 60);
///
/// What is written waits in a buffer until that is full, until this end reads, or until Flush or
/// Close; binary blocks are sent at once.  The two ends must write and read the same kinds of
/// things in the same order: blocks with their size in front (PutBlock, PutBinBlock, PutFile), or
/// integer and string records (Write, Read).
///
/// Word compression: while the environment variable TASocketCompress is set, text blocks are sent
/// as numbers of words, each word being sent in full once on a connection.  The receiver needs no
/// setting; it answers in the same way from then on.
///
/// A time limit is in whole seconds; one below 1 means to wait without limit.  It is for the first
/// byte of what is read; SetStallLimit bounds the silence within a transfer, and SetReadLimits the
/// time and the bytes of a whole read.  The bytes are not encrypted and the peer is not
/// authenticated.
///
/// Ownership: the socket owns its descriptor, which children do not inherit; the destructor closes
///            it.  Counters are not owned.
/// Errors:    operations return 0 for success, 1 for an error and, where said, 2 for a time-out;
///            GetErrMsg tells the reason.  After a failed read the connection may stand in the
///            middle of a block: close it.  Bytes from a peer, whatever they are, end in one of
///            these errors.  Memory is taken for what arrived, not for what is promised, and for
///            the text of a compressed block, of 16,777,215 bytes at most.  Where memory runs out,
///            a read ends in its error; it ends the process only where a list grows and where a
///            list or a compressed block is gathered to be sent.
/// Threads:   a socket belongs to one thread at a time.  The constructor makes the whole process
///            ignore SIGPIPE.
class VOR_API TASocket {
 public:
  /// A closed socket with a write buffer of 8,192 bytes.
  TASocket() noexcept;
  /// A write buffer of \a bufferSize bytes, at least 5.  It bounds the text blocks that can be sent
  /// (bufferSize - 5 bytes each) and the pieces in which files travel: both ends should use the
  /// same.  Whatever the buffer, no block is larger than 16,777,215 bytes.
  explicit TASocket(int bufferSize) noexcept;
  TASocket(const TASocket&) = delete;
  TASocket& operator=(const TASocket&) = delete;
  ~TASocket();

  // Connections.

  /// Listens on \a port of all local addresses; with 0 the system chooses one (see GetPort).  A
  /// port whose last connections are still being wound up by the system is not available.
  int OpenServer(int port) noexcept;

  /// Connects to \a port of \a host, a name or an address.
  int OpenClient(const VorString& host, int port) noexcept;
  /// The same, tried again every 2 seconds until it succeeds or \a timeout seconds have passed.
  int OpenClient(const VorString& host, int port, int timeout) noexcept;

  /// Waits for a connection to this server socket and hands it to \a client, which is closed first.
  int GetQuery(TASocket& client);
  /// The same, and reads one text block from it into \a query.  Any failure of that is 1; client's
  /// GetErrMsg tells the reason.
  int GetQuery(int readTimeout, VorString& query, TASocket& client) noexcept;
  /// The same; 2 if no connection comes within \a acceptTimeout seconds, where 0 does not wait
  /// and less than 0 waits without limit.
  int GetQuery(int readTimeout, VorString& query, TASocket& client, int acceptTimeout) noexcept;

  /// Sends what waits in the buffer, closes the socket and forgets the words of the connection.
  int Close();

  /// True while the socket listens or is connected, as far as this end knows.
  bool IsOpen() const { return _state != kClosed; }

  /// The local port; 0 if the socket is closed.
  int GetPort() const;

  /// Ends a transfer, as if the peer had closed, when the peer sends or takes nothing for \a
  /// seconds in the middle of it; 0, as at first, waits without limit.  It holds for this
  /// connection and the later ones of this socket.  Waits for whole blocks to begin are not
  /// concerned if they have a time limit of their own, and a server socket that waits for
  /// connections never is.
  void SetStallLimit(int seconds);

  /// Bounds each whole read of a block, record or file, so that no peer can draw it out: its time,
  /// from when what waited in the buffer was sent to the last byte, and the \a bytes that it takes,
  /// headers and lengths included.  A text that a compressed block stands for is bounded by them as
  /// well.  0, as at first, is no limit.  Beyond the time a read gives 2 and the message of a
  /// time-out, beyond the bytes 1 and the message of what is cut short; a size above the bound is
  /// not waited for.  It holds for this connection and the later ones of this socket.
  void SetReadLimits(int seconds, int bytes);

  /// The reason of the last failure, or "no error on socket".  The text lives until the next
  /// operation.
  const char* GetErrMsg() const { return _errMsg; }

  /// Sets the counters of bytes received in text blocks and of bytes written; either may be null.
  /// They must outlive the socket or be taken away again.
  void SetPerfo(TAPerfo* readPerfo, TAPerfo* writePerfo);

  // Blocks and records.

  /// Puts one text block into the buffer.  Its bytes go up to the first NUL.
  int PutBlock(const char* text) noexcept;
  int PutBlock(const VorString& text) noexcept;
  /// Puts a list of texts as one block.  Callers know that elements which hold blanks arrive whole
  /// in a compressed block only; otherwise the receiver gets each word as an element.
  int PutBlock(const VorListValVorString& list) noexcept;

  /// Reads one text block.  A NUL ends the part of the text that it arrived in.
  int GetBlock(VorString& text, int timeout) noexcept;
  /// Reads one block into \a list, which is emptied first.
  int GetBlock(VorListValVorString& list, int timeout) noexcept;

  /// Sends \a n bytes, at most 16,777,215, at once; only the header of an empty block waits in the
  /// buffer.
  int PutBinBlock(int n, const void* data) noexcept;
  /// Reads a binary block.  *data is allocated with malloc and to be freed with free by the caller;
  /// null if the result is not 0.
  int GetBinBlock(int* n, void** data, int timeout) noexcept;

  /// Puts a record into the buffer: 4 bytes, the least significant first, or a length of 4 bytes
  /// and the text.
  int Write(int value);
  int Write(const VorString& text) noexcept;
  /// Reads a record.
  int Read(int& value, int timeout) noexcept;
  int Read(VorString& text, int timeout) noexcept;

  /// Sends what waits in the buffer.
  int Flush();

  // Files.

  /// Sends the content of \a file.  The last of it may wait in the buffer.
  int PutFile(const VorString& file) noexcept;
  /// Receives into \a file, which is created or emptied; after an error it holds what arrived.
  int GetFile(const VorString& file, int timeout) noexcept;
  /// The same without the carriage returns (bytes of value 13).
  int GetFileASCII(const VorString& file, int timeout) noexcept;

 private:
  enum State { kClosed, kOpen, kCompressed };

  int Fail(const char* message);
  int OpenSocket(const char* message);
  int Abandon(const char* message);
  void TakeOver(int fd);
  void ApplyStallLimit() const;
  int PrepareAccept(TASocket& client);
  int Accept(TASocket& client);

  int BeginRead(int timeout);
  int EndRead(int result);
  int FailForTime();
  std::size_t LargestText() const;
  int BeginWrite();
  int CheckRecv(int timeout);
  bool Receive(void* out, std::size_t size);
  bool ReceiveInto(std::string& text, std::size_t size);
  int ReceiveSize(int& size, const char* message);
  int ReceiveText(VorString& text);
  int ReceiveList(VorListValVorString& list);
  int ReceiveBinary(int* n, void** data);
  int ReceivePlain(int size, std::string& text);
  template <typename Use>
  int ReceiveWords(Use use);
  int ReceiveInteger(int& value);
  int ReceiveString(std::string& text, std::size_t largest);
  int ReceiveRecord(VorString& text);

  bool MustCompress() const;
  int FailForSize(long long size);
  void AppendRaw(const void* bytes, std::size_t size);
  int AppendHeader(int size);
  int AppendLong(std::string_view bytes);
  template <typename NextWord>
  int PutWords(int mark, NextWord next);

  int AppendFile(int fd, long long& total);
  int SendWholeBlocks(int fd, long long& total);
  int ReceiveFile(const VorString& file, bool dropsReturns);

  std::size_t _bufferSize;
  int _fd = 0;  // 0 if closed
  State _state = kClosed;
  std::unique_ptr<char[]> _writeBuffer;
  std::size_t _pending = 0;  // bytes in _writeBuffer
  const char* _errMsg = "no error on socket";
  std::string _sizeMessage;  // what _errMsg points to if it tells a size
  TAPerfo* _readPerfo = nullptr;
  TAPerfo* _writePerfo = nullptr;
  int _stallLimit = 0;                                 // seconds
  int _readSeconds = 0;                                // of a whole read
  int _readBytes = 0;                                  // of a whole read
  bool _listens = false;                               // if open
  TAIndex _sentWords;                                  // with their identifiers
  std::unique_ptr<vor::ReceivedWords> _receivedWords;  // of the peer
  std::unique_ptr<vor::ReceiveBuffer> _received;       // ahead of what was read
};

#endif  // VOR_SOCKET_TASOCKET_H
