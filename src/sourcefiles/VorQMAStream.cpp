#include "sourcefiles/VorQMAStream.h"

#include <fcntl.h>
#include <string.h>

namespace vor {
namespace {

constexpr std::size_t kFirstSize = 64000;  // bytes

}  // namespace

VorQMAStream::VorQMAStream(const char* path) {
  if (path == nullptr) return;
  _file = OpenFile(path, O_RDONLY);
  if (_file.IsOpen()) _buffer.resize(kFirstSize);
}

char* VorQMAStream::NextLine() {
  do {
    char* const text = _buffer.data();
    auto* newline = _scanned == _end
                        ? nullptr
                        : static_cast<char*>(memchr(text + _scanned, '\n', _end - _scanned));
    if (newline != nullptr) {
      char* const line = text + _start;
      *newline = '\0';
      _start = _scanned = static_cast<std::size_t>(newline - text) + 1;
      return line;
    }
    _scanned = _end;
  } while (Refill());
  return nullptr;
}

// Moves the rest to the front and reads more after it.  False at the end of the file.
bool VorQMAStream::Refill() {
  if (!_file.IsOpen()) return false;
  if (_start > 0) {
    memmove(_buffer.data(), _buffer.data() + _start, _end - _start);
    _scanned -= _start;
    _end -= _start;
    _start = 0;
  }
  if (_end == _buffer.size()) _buffer.resize(2 * _buffer.size());
  const ssize_t count = ReadSome(_file.Get(), _buffer.data() + _end, _buffer.size() - _end);
  if (count <= 0) return false;
  _end += static_cast<std::size_t>(count);
  return true;
}

}  // namespace vor
