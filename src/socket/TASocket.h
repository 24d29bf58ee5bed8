#ifndef VOR_SOCKET_TASOCKET_H
#define VOR_SOCKET_TASOCKET_H

#include <memory>

#include "../base/Export.h"
#include "../base/VorString.h"

class TAPerfo;
class VorListValVorString;
namespace vor {
class BlockReader;
class BlockWriter;
struct Connection;
}  // namespace vor

/// One end of a TCP connection (IPv4) between two tools, or a server socket that accepts
/// connections.
///
/// A client opens a connection and a server accepts it.  From then on both ends are alike:
///
///     TASocket server, peer;              TASocket client;
///     server.OpenServer(4711);            client.OpenClient("host", 4711);
///     server.GetQuery(60, query, peer);   client.PutBlock("the query");
///     peer.PutBlock(answer);              client.GetBlock(answer, 60);
///
/// Both ends must write and read the same kinds of data in the same order: blocks, which begin with
/// their size (PutBlock, PutBinBlock, PutFile), or integer and string records (Write, Read).
///
/// Buffer: written data waits in the write buffer.  The buffer is sent when it is full, before
/// every read, and by Flush and Close.  Binary blocks are sent at once.  The size of the buffer
/// limits the text blocks that this end can send, and a file is sent in blocks of that size.
/// GetFile fails if a block is larger than the buffer of the receiver: give both ends buffers of
/// the same size.
///
/// Word compression: while the environment variable TASocketCompress is set, PutBlock sends each
/// word in full once per connection and afterwards a number in its place.  The receiver needs no
/// setting; after its first compressed block it compresses what it sends, too.
///
/// Limits: the `timeout` of a read limits the wait for its first byte, in seconds; below 1 there is
/// no limit.  SetStallLimit limits the silence within a transfer, SetReadLimits the time and the
/// bytes of each read, SetWriteLimits the time and the rate of each write.  A server for untrusted
/// clients should set all three.
///
/// Security: bytes are not encrypted, and the peer is not authenticated.  Whatever bytes a peer
/// sends, a read succeeds or returns an error.  It allocates memory for the bytes that arrived, not
/// for an announced size; a decoded compressed text has at most kLargestBlock bytes.
///
/// Fork: reads receive ahead into a buffer of the socket.  After a fork, only one of the processes
/// may read from a connection.
///
/// Ownership: the socket owns its descriptor and closes it in the destructor.  The descriptor is
///            close-on-exec and never 0, 1 or 2.  Counters are not owned.
/// Errors:    operations return 0 for success, 1 for an error and, where stated, 2 for a time-out.
///            GetErrMsg and GetErrno have the reason.  After a failed read or write the connection
///            may be in the middle of a block: close it.  A read that runs out of memory fails.
///            Elsewhere (a list that grows, a compressed block to send) the process ends.
/// Threads:   a socket belongs to one thread at a time.  The constructor makes the whole process
///            ignore SIGPIPE.
class VOR_API TASocket {
 public:
  /// The largest size of a block in bytes, whatever the size of the buffer.
  static constexpr int kLargestBlock = 16777215;

  /// A closed socket with a write buffer of 8,192 bytes.
  TASocket() noexcept;
  /// A closed socket with a write buffer of \a bufferSize bytes; at least 5 are used.  The largest
  /// text block that fits has bufferSize - 5 bytes.
  explicit TASocket(int bufferSize) noexcept;
  TASocket(const TASocket&) = delete;
  TASocket& operator=(const TASocket&) = delete;
  ~TASocket();

  // Connections.

  /// Listens on \a port of all local addresses.  0 selects a free port (see GetPort).  A port is
  /// not available while the system still keeps its last connections, for about a minute.
  int OpenServer(int port) noexcept;

  /// Connects to \a port of \a host, a name or an IPv4 address.
  int OpenClient(const VorString& host, int port) noexcept;
  /// Connects in the same way.  After a failure it tries again every 2 seconds, until \a timeout
  /// seconds have passed.
  int OpenClient(const VorString& host, int port, int timeout) noexcept;

  /// Waits for a connection to this server socket and accepts it into \a client, which is closed
  /// first.  Connections that are lost before they are accepted are skipped.  After an error the
  /// server socket stays open, and GetQuery may be called again: EMFILE and ENFILE (see GetErrno)
  /// mean that no descriptor was free, and the connection still waits.
  int GetQuery(TASocket& client);
  /// Accepts in the same way and reads one text block into \a query.  If the read fails, returns 1;
  /// \a client has the reason.
  int GetQuery(int readTimeout, VorString& query, TASocket& client) noexcept;
  /// Does the same, but returns 2 if there is no connection within \a acceptTimeout seconds.  0
  /// does not wait; less than 0 waits without limit.
  int GetQuery(int readTimeout, VorString& query, TASocket& client, int acceptTimeout) noexcept;

  /// Sends the write buffer, closes the socket and forgets the words of the connection.  Returns 0
  /// even if the buffer could not be sent; call Flush first to find out.
  int Close();

  /// True from a successful open or accept until Close, even if the peer has closed meanwhile.
  bool IsOpen() const;

  /// The local port; 0 if the socket is closed.
  int GetPort() const;

  // Limits.  They hold for the open connection and for later ones; 0, the default, is no limit.

  /// Limits the silence of the peer within a transfer.  A read or write fails as if the peer had
  /// closed when the peer sends or takes nothing for \a seconds.  The limit does not apply to
  /// server sockets, or to the wait for the first byte of a read that has a time limit of its own.
  void SetStallLimit(int seconds);

  /// Limits each read of a block, record or file.  \a seconds runs from the flush before the read
  /// to its last byte; \a bytes counts everything received, headers and lengths included, and also
  /// limits the text of a compressed block.  A read that takes too long returns 2 with the message
  /// of a time-out.  A read of too many bytes returns 1 with the message of a cut block, before it
  /// waits for them.
  void SetReadLimits(int seconds, int bytes);

  /// Limits each operation that sends: PutBlock, PutBinBlock, Write, PutFile, Flush, Close and the
  /// flush before a read.  \a seconds runs from the start of the operation until the system has
  /// taken its last byte.  \a bytesPerSecond is the least mean rate: the time spent waiting for the
  /// peer must be at most 1 second, and 1 second more for every \a bytesPerSecond bytes sent.  Both
  /// counts begin with the connection or with this call, whichever is later.
  ///
  /// An operation that reaches a limit drops what it has not sent and returns 1 with the message of
  /// a failed flush.  Bytes in the buffers of the system, up to some megabytes, count as sent.
  void SetWriteLimits(int seconds, int bytesPerSecond);

  // Errors.

  /// The reason for the last failure, or "no error on socket".  The text is never freed.  One that
  /// holds a block size is reused once blocks of 1,024 other sizes have been refused.
  const char* GetErrMsg() const;

  /// The reason for the last failure as a value of errno, or 0:
  ///   0          before the first failure; the socket is closed, the host is unknown, or the peer
  ///              closed the connection before all bytes had arrived
  ///   ETIMEDOUT  a limit of time was reached
  ///   EMSGSIZE   a block or record is too large to send or exceeds SetReadLimits, or a block of a
  ///              file exceeds the buffer of this end
  ///   EBADMSG    the peer sent something other than the block, record or file that is read
  ///   ENOMEM     memory ran out
  ///   EINVAL     a port is not within 0 to 65535, or GetQuery was called on a client
  /// Otherwise it is the error of the system call that failed: socket, bind or listen in OpenServer
  /// (EADDRINUSE), socket or connect in OpenClient (ECONNREFUSED), accept in GetQuery (EMFILE),
  /// poll or recv in reads (ECONNRESET), send in writes (EPIPE), open, read or write on a file
  /// (ENOENT).  If OpenClient could not look up the host, the error is the reason (EMFILE).
  int GetErrno() const;

  // Counters.

  /// Sets the counters of bytes received in text blocks and of bytes written; null for none.  They
  /// must outlive the socket or be replaced before they are destroyed.
  void SetPerfo(TAPerfo* readPerfo, TAPerfo* writePerfo);

  // Blocks.

  /// Writes one text block.  A text ends at its first NUL.
  int PutBlock(const char* text) noexcept;
  int PutBlock(const VorString& text) noexcept;
  /// Writes a list of texts as one block.  An element that contains blanks arrives whole only in a
  /// compressed block; otherwise each of its words arrives as an element.
  int PutBlock(const VorListValVorString& list) noexcept;

  /// Reads one text block.  The text is cut in pieces of 10,240 bytes, and each piece ends at its
  /// first NUL.
  int GetBlock(VorString& text, int timeout) noexcept;
  /// Reads one text block into \a list, which is emptied first.
  int GetBlock(VorListValVorString& list, int timeout) noexcept;

  /// Sends a binary block of \a n bytes, without waiting for a flush.  An empty block waits in the
  /// write buffer.
  int PutBinBlock(int n, const void* data) noexcept;
  /// Reads a binary block.  *data is from malloc, and the caller frees it with free.  After a
  /// failure *data is null and *n is 0.
  int GetBinBlock(int* n, void** data, int timeout) noexcept;

  // Records.

  /// Writes an integer record: 4 bytes, the least significant first.
  int Write(int value);
  /// Writes a string record: the length as an integer record, then all bytes of the text.
  int Write(const VorString& text) noexcept;
  /// Reads an integer record.
  int Read(int& value, int timeout) noexcept;
  /// Reads a string record.  The text ends at its first NUL.
  int Read(VorString& text, int timeout) noexcept;

  /// Sends the write buffer.  On a closed socket it does nothing and returns 0.
  int Flush();

  // Files.

  /// Sends the content of \a file; its last blocks may wait in the write buffer.  A regular file is
  /// sent up to the size that it has at the start.  If it becomes shorter meanwhile, it is sent up
  /// to its new end, which is not an error.
  int PutFile(const VorString& file) noexcept;
  /// Receives into \a file, which is created or emptied.  After an error the file holds the blocks
  /// that arrived.
  int GetFile(const VorString& file, int timeout) noexcept;
  /// Receives in the same way and drops carriage returns (bytes of value 13).
  int GetFileASCII(const VorString& file, int timeout) noexcept;

 private:
  int Create(int flags, const char* message);
  int AcceptFor(int seconds, TASocket& client);
  template <typename Action>
  int Get(int timeout, Action read);
  template <typename Action>
  int Put(Action write);

  const std::unique_ptr<vor::Connection> _connection;
  const std::unique_ptr<vor::BlockReader> _reader;
  const std::unique_ptr<vor::BlockWriter> _writer;
};

#endif  // VOR_SOCKET_TASOCKET_H
