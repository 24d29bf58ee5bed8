#include "foundation/LineReader.h"

#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>

namespace vor {
namespace {

constexpr std::size_t kLongestLine = 4094;  // bytes; a longer line is cut in pieces of this length
constexpr std::size_t kBlock = 1 << 16;     // bytes read at once

// Replaces bytes below 32, except newlines, and above 127, which are negative as signed char.
void BlankOut(char* text, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<signed char>(text[i]);
    text[i] = byte < ' ' && byte != '\n' ? ' ' : text[i];
  }
}

}  // namespace

LineReader::LineReader(const char* path) : _file(OpenFile(path, O_RDONLY)) {
  struct stat info;
  if (_file.IsOpen() && (fstat(_file.Get(), &info) != 0 || S_ISDIR(info.st_mode))) _file.Reset(-1);
  if (_file.IsOpen()) _block = std::make_unique_for_overwrite<char[]>(kBlock);
}

bool LineReader::Next(std::string_view* line) {
  if (!IsOpen()) return false;
  for (;;) {
    const char* const begin = _block.get() + _start;
    const std::size_t rest = _end - _start;
    // The byte after the longest piece shows whether the line ends there.
    const void* const newline = memchr(begin, '\n', std::min(rest, kLongestLine + 1));
    if (newline != nullptr) {
      *line = std::string_view(begin, static_cast<const char*>(newline));
      _start += line->size() + 1;
      return true;
    }
    if (rest > kLongestLine) {
      *line = std::string_view(begin, kLongestLine);
      _start += kLongestLine;
      return true;
    }
    if (!ReadMore()) return false;  // a line without a newline is dropped
  }
}

// Moves the incomplete line to the front of the block and reads more after it.
bool LineReader::ReadMore() {
  _end -= _start;
  memmove(_block.get(), _block.get() + _start, _end);
  _start = 0;
  const ssize_t count = ReadSome(_file.Get(), _block.get() + _end, kBlock - _end);
  if (count <= 0) return false;
  BlankOut(_block.get() + _end, static_cast<std::size_t>(count));
  _end += static_cast<std::size_t>(count);
  return true;
}

}  // namespace vor
