#include "process/OutputPipe.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace vor {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;  // of a pipe
constexpr int kIntervalMs = 10;                 // of looks at a process without a descriptor

}  // namespace

int OutputPipe::Open() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errno;
  FileDescriptor reader(ends[0]), writer(ends[1]);
  _reader.Reset(AboveStandard(reader.Release()));
  if (!_reader.IsOpen()) return errno;
  _writer.Reset(AboveStandard(writer.Release()));
  if (!_writer.IsOpen()) return errno;
  _buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
  return 0;
}

void OutputPipe::Collect(const FileDescriptor& process, int limitMs) {
  if (!process.IsOpen()) limitMs = std::min(limitMs, kIntervalMs);
  pollfd polled[] = {{_reader.Get(), POLLIN, 0}, {process.Get(), POLLIN, 0}};
  const int ready = poll(polled, std::size(polled), limitMs);
  // Descriptors may be limited to fewer than two by now, or memory lacks.
  if (ready < 0 && errno != EINTR) poll(nullptr, 0, std::min(limitMs, kIntervalMs));
  if (ready > 0 && polled[0].revents != 0) Read(kBufferSize);
}

void OutputPipe::Drain() {
  int left = 0;
  if (!_reader.IsOpen() || ioctl(_reader.Get(), FIONREAD, &left) != 0) return;
  for (std::size_t rest = static_cast<std::size_t>(left); rest > 0;) {
    const std::size_t count = Read(std::min(rest, kBufferSize));
    if (count == 0) return;
    rest -= count;
  }
}

// Returns 0 at the end.
std::size_t OutputPipe::Read(std::size_t most) {
  const ssize_t count = ReadSome(_reader.Get(), _buffer.get(), most);
  if (count <= 0) {
    _reader.Reset(-1);
    return 0;
  }
  const std::size_t size = static_cast<std::size_t>(count);
  const std::size_t kept = std::min(size, _maxBytes - _text.size());
  _text.append(_buffer.get(), kept);
  if (kept < size) _hasDropped = true;
  return size;
}

}  // namespace vor
