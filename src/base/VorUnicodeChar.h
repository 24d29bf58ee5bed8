#ifndef VOR_BASE_VORUNICODECHAR_H
#define VOR_BASE_VORUNICODECHAR_H

#include <compare>
#include <concepts>

#include "base/Export.h"

/// One Unicode character, held as its code point.
///
/// A char gives the code point of its byte value, 0 to 255.  The class tests know all of Unicode
/// and do not depend on the locale of the process; where the system has no UTF-8 locale data they
/// fall back to the ASCII rules.  Characters are ordered by code point.
///
/// Threads: a plain value; the class tests may be called from any thread.
class VOR_API VorUnicodeChar {
 public:
  constexpr VorUnicodeChar() = default;
  constexpr VorUnicodeChar(char value) : _codePoint(static_cast<unsigned char>(value)) {}
  /// Any other integer is the code point itself; only a char32_t converts without being asked to.
  template <std::integral T>
  explicit(!std::same_as<T, char32_t>) constexpr VorUnicodeChar(T codePoint)
      : _codePoint(static_cast<char32_t>(codePoint)) {}

  constexpr char32_t GetCodePoint() const { return _codePoint; }

  /// The byte with this value; '\0' for a code point above 255, which no char can tell.  As a
  /// condition a character is therefore false above 255 too: compare it instead.
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
