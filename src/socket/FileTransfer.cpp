#include "socket/FileTransfer.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "base/PosixFile.h"
#include "base/VorString.h"
#include "socket/BlockFormat.h"
#include "socket/BlockReader.h"
#include "socket/BlockWriter.h"
#include "socket/Connection.h"
#include "socket/SocketBytes.h"
#include "socket/SocketIo.h"

namespace vor {
namespace {

constexpr std::size_t kBatchBlocks = 8;  // blocks read and sent at once
constexpr std::size_t kLargeBuffer = 1 << 15;
constexpr std::size_t kWindow = 1 << 17;  // bytes received and written at once
constexpr char kCarriageReturn = 13;

constexpr const char* kCannotRead = "Unable to read file for TASocket::PutFile";
constexpr const char* kCannotWrite = "Unable to write in file for TASocket::GetFile";

constexpr long long kNoEnd = std::numeric_limits<long long>::max();

// The largest number of bytes of a file to send.  A regular file is sent up to its size at the
// start, because the transfer of a file that grows meanwhile might not end.  Pipes and files that
// have bytes but no size (/proc) are sent up to their end.
long long EndOf(int fd) {
  struct stat info;
  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) return kNoEnd;
  if (info.st_size > 0) return info.st_size;
  char byte;
  const bool hasBytes = pread(fd, &byte, 1, 0) > 0;
  return hasBytes && fstat(fd, &info) == 0 && info.st_size == 0 ? kNoEnd : 0;
}

/// Sends the bytes of a file as blocks.
class FileSender {
 public:
  FileSender(Connection& connection, BlockWriter& writer, int fd)
      : _connection(connection), _writer(writer), _fd(fd), _end(EndOf(fd)) {}

  /// Writes all blocks.  Returns 0 or 1.
  int Send();
  /// The bytes of the file that were written.
  long long Total() const { return _total; }

 private:
  int SendWholeBlocks();
  ssize_t Read(char* bytes, std::size_t size);

  Connection& _connection;
  BlockWriter& _writer;
  const int _fd;
  const long long _end;
  long long _total = 0;
};

// Returns the bytes read, 0 at the end, -1 with the failure recorded.
ssize_t FileSender::Read(char* bytes, std::size_t size) {
  const auto left = static_cast<unsigned long long>(_end - _total);
  const ssize_t count =
      ReadSome(_fd, bytes, static_cast<std::size_t>(std::min<unsigned long long>(size, left)));
  if (count < 0) _connection.Fail(kCannotRead, errno);
  return count;
}

int FileSender::Send() {
  for (;;) {
    // A block takes the room that is left in the buffer.
    std::size_t room = 0;
    char* const block = _writer.BeginBlock(&room);
    if (block == nullptr) return 1;
    if (_writer.IsEmpty() && SendWholeBlocks() != 0) return 1;
    const ssize_t count = Read(block, room);
    if (count <= 0) return count == 0 ? 0 : 1;
    _writer.EndBlock(static_cast<std::size_t>(count));
    _total += count;
  }
}

// Sends as much of a large file as fills whole blocks, many at once.  The bytes on the wire are the
// same as for one block after the other.
int FileSender::SendWholeBlocks() {
  const std::size_t blockSize = _writer.BufferSize() - kHeaderSize;
  if (_writer.BufferSize() > kLargeBuffer) return 0;  // one block fills a large send
  if (_end == kNoEnd) return 0;
  const auto blocksLeft = [&] { return static_cast<std::size_t>(_end - _total) / blockSize; };
  if (blocksLeft() < 2) return 0;
  const std::unique_ptr<char[]> batch(new (std::nothrow) char[kBatchBlocks * blockSize]);
  if (batch == nullptr) return 0;  // the caller sends one block at a time
  while (blocksLeft() >= 2) {
    const ssize_t count = Read(batch.get(), std::min(blocksLeft(), kBatchBlocks) * blockSize);
    if (count <= 0) return count == 0 ? 0 : 1;  // 0: the file was shortened
    // The headers are inserted by the gathering send, so that the file is read in one piece.
    unsigned char headers[kBatchBlocks][kHeaderSize];
    iovec pieces[2 * kBatchBlocks];
    std::size_t used = 0;
    for (std::size_t at = 0; at < static_cast<std::size_t>(count); at += blockSize) {
      const std::size_t size = std::min(static_cast<std::size_t>(count) - at, blockSize);
      unsigned char(&header)[kHeaderSize] = headers[used / 2];
      SetSize(header, static_cast<int>(size));
      pieces[used++] = {header, kHeaderSize};
      pieces[used++] = {batch.get() + at, size};
    }
    if (_writer.Send(pieces, used) != 0) return 1;
    _total += count;
  }
  return 0;
}

// Collects blocks without copying them, so that the file is written in large pieces.
class FileWriter {
 public:
  FileWriter(int fd, bool dropsReturns) : _fd(fd), _dropsReturns(dropsReturns) {}

  /// Adds bytes, which stay where they are until Flush and may be changed.
  bool Add(char* bytes, std::size_t size) {
    if (_count == std::size(_pieces) && !Flush()) return false;
    char* const end = bytes + size;
    char* const kept = _dropsReturns ? std::remove(bytes, end, kCarriageReturn) : end;
    _pieces[_count++] = {bytes, static_cast<std::size_t>(kept - bytes)};
    return true;
  }

  bool Flush() {
    return PutAll(_pieces, std::exchange(_count, 0), [this](iovec* first, std::size_t left) {
      return writev(_fd, first, static_cast<int>(left));
    });
  }

 private:
  const int _fd;
  const bool _dropsReturns;
  iovec _pieces[32];
  std::size_t _count = 0;
};

// Receives blocks of at most \a largest bytes up to the empty one.
int ReceiveBlocks(Connection& connection, ReceiveBuffer& in, std::size_t largest,
                  FileWriter& writer, long long& total) {
  const int fd = connection.fd.Get();
  for (;;) {
    // Bytes in the buffer are written before missing ones are received over them.
    if (in.Size() < kHeaderSize && !writer.Flush()) return connection.Fail(kCannotWrite, errno);
    if (!in.Ensure(fd, kHeaderSize)) return connection.Fail(kNoSize, in.Error());
    unsigned char header[kHeaderSize];
    memcpy(header, in.Data(), kHeaderSize);
    in.Consume(kHeaderSize);
    if (!IsHeader(header)) return connection.Fail(kNotFull, EBADMSG);
    const int size = GetSize(header);
    if (size == 0) return 0;
    if (size < 0) return connection.Fail(kNotFull, EBADMSG);
    const auto wanted = static_cast<std::size_t>(size);
    if (wanted > largest) return connection.Fail(kNotFull, EMSGSIZE);
    if (in.Size() < wanted && !writer.Flush()) return connection.Fail(kCannotWrite, errno);
    if (!in.Ensure(fd, wanted)) return connection.Fail(kNotFull, in.Error());
    if (!writer.Add(in.Data(), wanted)) return connection.Fail(kCannotWrite, errno);
    in.Consume(wanted);
    total += size;
  }
}

}  // namespace

int SendFile(Connection& connection, BlockWriter& writer, const char* path) {
  const FileDescriptor input = OpenFile(path, O_RDONLY);
  if (!input.IsOpen()) return connection.Fail(kCannotRead, errno);
  FileSender sender(connection, writer, input.Get());
  int result = sender.Send();
  if (result == 0) result = writer.Binary(0, nullptr);
  if (result == 0) result = writer.Text(std::to_string(sender.Total()));
  writer.Count(sender.Total());
  return result;
}

int ReceiveFile(Connection& connection, BlockReader& reader, const char* path, std::size_t largest,
                bool dropsReturns) {
  ReceiveBuffer& in = reader.Buffer();
  largest = std::min<std::size_t>(largest, kLargestSize);
  if (!in.Reserve(std::max(kWindow, largest))) {
    return connection.Fail("Unable to create read buffer", ENOMEM);
  }
  const FileDescriptor output = OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!output.IsOpen()) return connection.Fail(kCannotWrite, errno);
  FileWriter writer(output.Get(), dropsReturns);
  long long total = 0;
  const int result = ReceiveBlocks(connection, in, largest, writer, total);
  // Whole blocks stay in the file after a failure, too.
  const int error = writer.Flush() ? 0 : errno;
  if (result != 0) return result;
  if (error != 0) return connection.Fail(kCannotWrite, error);
  VorString count;
  if (reader.Text(count) != 0) return 1;
  if (strtoll(count, nullptr, 10) == total) return 0;
  return connection.Fail("Wrong byte count in GetFile", EBADMSG);
}

}  // namespace vor
