#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <string>

#include "base/PosixFile.h"
#include "perfo/TAPerfo.h"
#include "socket/SocketBytes.h"
#include "socket/SocketIo.h"
#include "socket/TASocket.h"

// A file travels as blocks of its bytes, none larger than the write buffer, an empty block, and a
// text block that tells how many bytes there were.

namespace {

constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kBatchBlocks = 16;  // blocks read and sent at once
constexpr std::size_t kLargeBuffer = 1 << 15;
constexpr std::size_t kOutBlock = 1 << 16;  // bytes written to a file at once
constexpr char kCarriageReturn = 13;

constexpr const char* kCannotRead = "Unable to read file for TASocket::PutFile";
constexpr const char* kCannotWrite = "Unable to write in file for TASocket::GetFile";
constexpr const char* kNotFull = "Unable to get full block";

// Gathers what arrives, so that the file is written in large pieces; the last of it when it goes
// away.
class FileWriter {
 public:
  FileWriter(int fd, bool dropsReturns) : _fd(fd), _dropsReturns(dropsReturns) {}
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;
  ~FileWriter() { Flush(); }

  bool Write(const char* bytes, std::size_t size) {
    if (_dropsReturns) {
      std::copy_if(bytes, bytes + size, std::back_inserter(_held),
                   [](char c) { return c != kCarriageReturn; });
    } else {
      _held.append(bytes, size);
    }
    return _held.size() < kOutBlock || Flush();
  }

  bool Flush() {
    const bool isWritten = vor::WriteAll(_fd, _held.data(), _held.size());
    _held.clear();
    return isWritten;
  }

 private:
  const int _fd;
  const bool _dropsReturns;
  std::string _held;
};

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
    const std::size_t room = _bufferSize - _pending - kHeaderSize;
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
  const std::size_t blocks = kBatchBlocks;
  const auto batch = std::make_unique_for_overwrite<char[]>(blocks * _bufferSize);
  while (isWorthIt()) {
    const std::size_t left = static_cast<std::size_t>(info.st_size - total) / blockSize;
    iovec parts[kBatchBlocks];
    const std::size_t used = std::min(blocks, left);
    for (std::size_t i = 0; i < used; ++i) {
      parts[i] = {batch.get() + i * _bufferSize + kHeaderSize, blockSize};
    }
    ssize_t count;
    do {
      count = readv(fd, parts, static_cast<int>(used));
    } while (count < 0 && errno == EINTR);
    if (count < 0) return Fail(kCannotRead);
    if (count == 0) return 0;  // it has become shorter meanwhile
    std::size_t size = 0;
    for (auto rest = static_cast<std::size_t>(count); rest > 0;) {
      const std::size_t inBlock = std::min(rest, blockSize);
      unsigned char header[kHeaderSize];
      SetSize(header, static_cast<int>(inBlock));
      std::copy(header, header + kHeaderSize, batch.get() + size);
      size += kHeaderSize + inBlock;
      rest -= inBlock;
    }
    iovec whole = {batch.get(), size};
    if (!vor::SendAll(_fd, &whole, 1)) return Fail("Unable to flush buffer");
    total += count;
  }
  return 0;
}

int TASocket::GetFile(const VorString& file, int timeout) noexcept {
  const int result = BeginRead(timeout);
  return result != 0 ? result : ReceiveFile(file, false);
}

int TASocket::GetFileASCII(const VorString& file, int timeout) noexcept {
  const int result = BeginRead(timeout);
  return result != 0 ? result : ReceiveFile(file, true);
}

int TASocket::ReceiveFile(const VorString& file, bool dropsReturns) {
  const vor::FileDescriptor output = vor::OpenFile(file, O_WRONLY | O_CREAT | O_TRUNC);
  if (!output.IsOpen()) return Fail(kCannotWrite);
  return ReceiveFileBlocks(output.Get(), dropsReturns);
}

int TASocket::ReceiveFileBlocks(int fd, bool dropsReturns) {
  const std::unique_ptr<char[]> block(new (std::nothrow) char[_bufferSize]);
  if (block == nullptr) return Fail("Unable to create read buffer");
  FileWriter writer(fd, dropsReturns);
  long long received = 0;
  for (;;) {
    int size = 0;
    if (ReceiveSize(size, "Unable to get block size") != 0) return 1;
    if (size == 0) break;
    const auto wanted = static_cast<std::size_t>(std::max(size, 0));
    if (size < 0 || wanted > _bufferSize) return Fail(kNotFull);
    if (!Receive(block.get(), wanted)) return Fail(kNotFull);
    if (!writer.Write(block.get(), wanted)) return Fail(kCannotWrite);
    received += size;
  }
  if (!writer.Flush()) return Fail(kCannotWrite);
  VorString count;
  if (ReceiveText(count) != 0) return 1;
  return strtoll(count, nullptr, 10) == received ? 0 : Fail("Wrong byte count in GetFile");
}
