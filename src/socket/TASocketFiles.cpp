#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "base/PosixFile.h"
#include "perfo/TAPerfo.h"
#include "socket/BlockFormat.h"
#include "socket/SocketBytes.h"
#include "socket/SocketIo.h"
#include "socket/TASocket.h"

// A file travels as blocks of its bytes, none larger than the write buffer, an empty block, and a
// text block that tells how many bytes there were.

namespace {

using vor::kHeaderSize;
using vor::kLargestSize;
using vor::kNotFlushed;
using vor::kNotFull;

constexpr std::size_t kBatchBlocks = 8;  // blocks read and sent at once
constexpr std::size_t kLargeBuffer = 1 << 15;
constexpr std::size_t kWindow = 1 << 17;  // bytes received and written at once
constexpr char kCarriageReturn = 13;

constexpr const char* kCannotRead = "Unable to read file for TASocket::PutFile";
constexpr const char* kCannotWrite = "Unable to write in file for TASocket::GetFile";

// Gathers blocks where they lie, so that the file is written in large pieces.
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

  bool Flush() { return vor::WritePieces(_fd, _pieces, std::exchange(_count, 0)); }

 private:
  const int _fd;
  const bool _dropsReturns;
  iovec _pieces[32];
  std::size_t _count = 0;
};

// Takes blocks of at most \a largest bytes up to the empty one.  Null, or what went wrong.
const char* ReceiveBlocks(int fd, vor::ReceiveBuffer& in, std::size_t largest, FileWriter& writer,
                          long long& total) {
  for (;;) {
    // Where bytes are missing, those in the buffer make room for them: they are written before.
    if (in.Size() < kHeaderSize && !writer.Flush()) return kCannotWrite;
    if (!in.Ensure(fd, kHeaderSize)) return vor::kNoSize;
    unsigned char header[kHeaderSize];
    memcpy(header, in.Data(), kHeaderSize);
    in.Consume(kHeaderSize);
    if (!vor::IsHeader(header)) return kNotFull;
    const int size = GetSize(header);
    if (size == 0) return nullptr;
    const auto wanted = static_cast<std::size_t>(size);
    if (size < 0 || wanted > largest) return kNotFull;
    if (in.Size() < wanted && !writer.Flush()) return kCannotWrite;
    if (!in.Ensure(fd, wanted)) return kNotFull;
    if (!writer.Add(in.Data(), wanted)) return kCannotWrite;
    in.Consume(wanted);
    total += size;
  }
}

}  // namespace

int TASocket::PutFile(const VorString& file) noexcept {
  if (BeginWrite() != 0) return 1;
  const vor::FileDescriptor input = vor::OpenFile(file, O_RDONLY);
  if (!input.IsOpen()) return Fail(kCannotRead);
  long long total = 0;
  int result = AppendFile(input.Get(), total);
  if (result == 0) result = PutBinBlock(0, nullptr);
  if (result == 0) result = PutBlock(VorString(std::to_string(total)));
  if (_writePerfo != nullptr) _writePerfo->Count(static_cast<int>(total));
  return result;
}

// Puts the blocks of a file, and adds its bytes to \a total.
int TASocket::AppendFile(int fd, long long& total) {
  for (;;) {
    if (_pending + kHeaderSize >= _bufferSize && Flush() != 0) return 1;
    if (_pending == 0 && SendWholeBlocks(fd, total) != 0) return 1;
    // A block takes the room that is left in the buffer; the file is read right into it.
    const std::size_t room =
        std::min<std::size_t>(_bufferSize - _pending - kHeaderSize, kLargestSize);
    if (room < 1) return Fail("Unable to free write buffer");
    const ssize_t count = vor::ReadSome(fd, _writeBuffer.get() + _pending + kHeaderSize, room);
    if (count < 0) return Fail(kCannotRead);
    if (count == 0) return 0;
    if (AppendHeader(static_cast<int>(count)) != 0) return 1;
    _pending += static_cast<std::size_t>(count);
    total += count;
  }
}

// Sends as much of a large file as fills whole blocks, many at once.  The bytes are those that one
// block after the other would give.
int TASocket::SendWholeBlocks(int fd, long long& total) {
  const std::size_t blockSize = _bufferSize - kHeaderSize;
  if (_bufferSize > kLargeBuffer) return 0;  // one block is as good as many
  struct stat info;
  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) return 0;
  const auto isWorthIt = [&] {
    return info.st_size - total >= static_cast<long long>(2 * blockSize);
  };
  if (!isWorthIt()) return 0;
  const std::unique_ptr<char[]> batch(new (std::nothrow) char[kBatchBlocks * blockSize]);
  if (batch == nullptr) return 0;  // one by one, then
  while (isWorthIt()) {
    const auto left = static_cast<std::size_t>(info.st_size - total) / blockSize;
    const std::size_t wanted = std::min(left, kBatchBlocks) * blockSize;
    const ssize_t count = vor::ReadSome(fd, batch.get(), wanted);
    if (count < 0) return Fail(kCannotRead);
    if (count == 0) return 0;  // it has become shorter meanwhile
    // The headers are put in between on the way out: the bytes of the file stay in one piece.
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
    if (!vor::SendAll(_fd, pieces, used)) return Fail(kNotFlushed);
    total += count;
  }
  return 0;
}

int TASocket::GetFile(const VorString& file, int timeout) noexcept {
  const int result = BeginRead(timeout);
  return result != 0 ? result : EndRead(ReceiveFile(file, false));
}

int TASocket::GetFileASCII(const VorString& file, int timeout) noexcept {
  const int result = BeginRead(timeout);
  return result != 0 ? result : EndRead(ReceiveFile(file, true));
}

int TASocket::ReceiveFile(const VorString& file, bool dropsReturns) {
  const std::size_t largest = std::min<std::size_t>(_bufferSize, kLargestSize);
  if (!_received->Reserve(std::max(kWindow, largest))) return Fail("Unable to create read buffer");
  const vor::FileDescriptor output = vor::OpenFile(file, O_WRONLY | O_CREAT | O_TRUNC);
  if (!output.IsOpen()) return Fail(kCannotWrite);
  FileWriter writer(output.Get(), dropsReturns);
  long long total = 0;
  const char* problem = ReceiveBlocks(_fd, *_received, largest, writer, total);
  // Whole blocks stay in the file, whatever came after them.
  if (!writer.Flush() && problem == nullptr) problem = kCannotWrite;
  if (problem != nullptr) return Fail(problem);
  VorString count;
  if (ReceiveText(count) != 0) return 1;
  return strtoll(count, nullptr, 10) == total ? 0 : Fail("Wrong byte count in GetFile");
}
