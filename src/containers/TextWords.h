#ifndef VOR_CONTAINERS_TEXTWORDS_H
#define VOR_CONTAINERS_TEXTWORDS_H

#include <stdlib.h>
#include <string.h>

#include <bit>
#include <cstddef>
#include <cstdint>

namespace vor {

/// Eight bytes of text as a number.  Two numbers compare as their bytes do.
using TextWord = std::uint64_t;

inline TextWord LoadTextWord(const char* bytes) {
  TextWord word;
  memcpy(&word, bytes, sizeof word);
  return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

/// A text without NUL bytes, read in words.  The last word is padded with at least one NUL byte, so
/// texts are in strcmp order if their words are.
///
/// Ownership: refers to the text, which must outlive it.
class TextWords {
 public:
  TextWords(const char* text, std::size_t length)
      : _text(text), _last(length / sizeof(TextWord)), _lastWord(0) {
    const std::size_t rest = length % sizeof(TextWord);
    if (rest == 0) return;
    if (length > sizeof(TextWord)) {  // what precedes the rest is shifted out
      _lastWord = LoadTextWord(text + length - sizeof(TextWord));
    } else {
      for (std::size_t i = 0; i < rest; ++i) {
        _lastWord = _lastWord << 8 | static_cast<unsigned char>(text[i]);
      }
    }
    _lastWord <<= 8 * (sizeof(TextWord) - rest);
  }

  /// The index of the last word.
  std::size_t Last() const { return _last; }

  TextWord operator[](std::size_t i) const {
    return i < _last ? LoadTextWord(_text + i * sizeof(TextWord)) : _lastWord;
  }

 private:
  const char* _text;
  std::size_t _last;
  TextWord _lastWord;
};

/// A copy of a text from malloc() that may be read in whole words up to its NUL; null if there is
/// no memory.
inline char* CopyInWords(const char* text, std::size_t length) {
  const std::size_t lastWord = length / sizeof(TextWord) * sizeof(TextWord);
  char* copy = static_cast<char*>(malloc(lastWord + sizeof(TextWord)));
  if (copy == nullptr) return nullptr;
  memset(copy + lastWord, 0, sizeof(TextWord));
  memcpy(copy, text, length);
  return copy;
}

}  // namespace vor

#endif  // VOR_CONTAINERS_TEXTWORDS_H
