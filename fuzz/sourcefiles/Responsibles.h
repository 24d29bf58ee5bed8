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

/// Discards standard output, because printing would take more time than the parsers.
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

/// The input.  An input that begins with "~" makes long lines: that byte is dropped, and each
/// further "~" stands for 20,000 copies of the byte before it, so that lines exceed the buffer.
inline std::string Content(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  if (!input.starts_with('~')) return input;
  std::string content;
  for (std::size_t i = 1; i < size; ++i) {
    const bool repeats = input[i] == '~' && input[i - 1] != '\n' && content.size() < 120000;
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

// The two that follow visit each byte of long lines.  What they do guides no search for inputs, and
// recording it takes most of the time.

/// The bytes of the valid UTF-8 character at a place of \a text; 0 if there is none.
[[clang::no_sanitize("coverage")]] inline std::size_t CharacterSize(const std::string& text,
                                                                    std::size_t place) {
  const auto byte = [&text, place](std::size_t i) -> unsigned {
    return place + i < text.size() ? static_cast<unsigned char>(text[place + i]) : 0;
  };
  const unsigned lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool isTooLong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool isTooLarge = lead == 0xF4 && byte(1) > 0x8F;
  const bool isSurrogate = lead == 0xED && byte(1) > 0x9F;
  return isTooLong || isTooLarge || isSurrogate ? 0 : size;
}

/// \a text as messages show it: control characters of ASCII and of U+0080 to U+009F as escapes.
[[clang::no_sanitize("coverage")]] inline std::string Shown(const std::string& text) {
  std::string shown;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t plain = i;
    while (plain < text.size() && text[plain] >= 0x20 && text[plain] < 0x7F) ++plain;
    shown.append(text, i, plain - i);
    i = plain;
    if (i == text.size()) break;
    const std::size_t known = CharacterSize(text, i);
    const std::size_t end = i + (known == 0 ? 1 : known);
    const auto last = static_cast<unsigned char>(text[end - 1]);
    const bool isHigh = last >= 0x80 && last < 0xA0 && (known == 0 || text[i] == '\xC2');
    const bool isControl = known < 3 && (isHigh || last < 0x20 || last == 0x7F);
    for (; i < end; ++i) {
      constexpr char kDigits[] = "0123456789abcdef";
      if (!isControl) {
        shown += text[i];
      } else if (last == '\t' || last == '\r') {
        shown += last == '\t' ? "\\t" : "\\r";
      } else {
        shown += {'\\', 'x', kDigits[(text[i] >> 4) & 15], kDigits[text[i] & 15]};
      }
    }
  }
  return shown;
}

/// True if \a got is this text, or null for null.
inline bool IsSame(const char* got, const std::string* want) {
  return want == nullptr ? got == nullptr : got != nullptr && *want == got;
}

}  // namespace responsibles

#endif  // VOR_FUZZ_SOURCEFILES_RESPONSIBLES_H
