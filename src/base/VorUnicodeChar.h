#ifndef VOR_BASE_VORUNICODECHAR_H
#define VOR_BASE_VORUNICODECHAR_H

#include <compare>
#include <concepts>

#include "Export.h"

/// One Unicode character, held as its code point.
///
/// A char becomes the code point of its byte value, 0 to 255.  Characters are ordered by code
/// point.
///
/// The class tests cover all of Unicode and do not depend on the locale of the process.  On a
/// system without UTF-8 locale data they follow the ASCII rules.
///
/// Threads: a plain value; the class tests may be called from any thread.
class VOR_API VorUnicodeChar {
 public:
  constexpr VorUnicodeChar() = default;
  constexpr VorUnicodeChar(char value) : _codePoint(static_cast<unsigned char>(value)) {}
  /// Any other integer is the code point itself; only char32_t converts implicitly.
  template <std::integral T>
  explicit(!std::same_as<T, char32_t>) constexpr VorUnicodeChar(T codePoint)
      : _codePoint(static_cast<char32_t>(codePoint)) {}

  constexpr char32_t GetCodePoint() const { return _codePoint; }

  /// The byte with this value; '\0' for a code point above 255.  So a character above 255 is false
  /// as a condition, like U+0000; compare characters instead.
  constexpr operator char() const {
    return _codePoint > 0xFF ? '\0' : static_cast<char>(static_cast<unsigned char>(_codePoint));
  }

  // Class tests: 1 if the character belongs to the class, else 0.
  int IsAlnum() const;
  int IsAlpha() const;
  int IsCntrl() const;
  int IsDigit() const;
  int IsGraph() const;
  int IsLower() const;
  int IsPrint() const;
  int IsPunct() const;
  int IsSpace() const;
  int IsUpper() const;
  int IsXDigit() const;

  friend constexpr bool operator==(VorUnicodeChar left, VorUnicodeChar right) {
    return left._codePoint == right._codePoint;
  }
  friend constexpr std::strong_ordering operator<=>(VorUnicodeChar left, VorUnicodeChar right) {
    return left._codePoint <=> right._codePoint;
  }
  template <std::integral T>
  friend constexpr bool operator==(VorUnicodeChar left, T right) {
    return left == VorUnicodeChar(right);
  }
  template <std::integral T>
  friend constexpr std::strong_ordering operator<=>(VorUnicodeChar left, T right) {
    return left <=> VorUnicodeChar(right);
  }

 private:
  char32_t _codePoint = 0;
};

#endif  // VOR_BASE_VORUNICODECHAR_H
