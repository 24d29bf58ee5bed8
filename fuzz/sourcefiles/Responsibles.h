#ifndef VOR_FUZZ_SOURCEFILES_RESPONSIBLES_H
#define VOR_FUZZ_SOURCEFILES_RESPONSIBLES_H

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

// What the targets of the responsibility files share.

namespace responsibles {

inline void Expect(bool condition) {
  if (!condition) abort();
}

/// A file in memory whose content may be changed.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& content = "") { Write(content); }
  void Write(const std::string& content) {
    Expect(ftruncate(_file, 0) == 0);
    Expect(pwrite(_file, content.data(), content.size(), 0) ==
           static_cast<ssize_t>(content.size()));
  }
  std::string Path() const { return "/proc/self/fd/" + std::to_string(_file); }

 private:
  const int _file = memfd_create("responsibles", MFD_CLOEXEC);
};

/// Takes what standard output says, which would cost more time than the parsers.
class Printed {
 public:
  Printed() { stdout = open_memstream(&_text, &_size); }
  std::string Take() {
    fflush(stdout);
    std::string text(_text, _size);
    rewind(stdout);
    return text;
  }

 private:
  char* _text = nullptr;
  size_t _size = 0;
};

/// The input.  One that begins with "~" stands for long lines: without that byte, and with each
/// further "~" as 20,000 times the byte before it, so that lines pass the buffer.
inline std::string Content(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  if (!input.starts_with('~')) return input;
  std::string content;
  for (std::size_t i = 1; i < size; ++i) {
    const bool repeats = input[i] == '~' && input[i - 1] != '\n' && content.size() < 200000;
    content.append(repeats ? 20000 : 1, repeats ? input[i - 1] : input[i]);
  }
  return content;
}

/// The lines that end with a newline, each up to its first NUL.
inline std::vector<std::string> LinesOf(const std::string& content) {
  std::vector<std::string> lines;
  std::istringstream stream(content.substr(0, content.rfind('\n') + 1));
  for (std::string line; std::getline(stream, line);) lines.emplace_back(line.c_str());
  return lines;
}

inline std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
  return text;
}

/// True if \a got is this text, or null for null.
inline bool IsSame(const char* got, const std::string* want) {
  return want == nullptr ? got == nullptr : got != nullptr && *want == got;
}

}  // namespace responsibles

#endif  // VOR_FUZZ_SOURCEFILES_RESPONSIBLES_H
