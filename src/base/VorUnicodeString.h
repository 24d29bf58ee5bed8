#ifndef VOR_BASE_VORUNICODESTRING_H
#define VOR_BASE_VORUNICODESTRING_H

#include <compare>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string>

#include "base/Export.h"
#include "base/VorUnicodeChar.h"

/// A string of Unicode characters with value semantics.
///
/// Text comes in and goes out as UTF-8; lengths and positions count characters, not bytes, and
/// positions are 0-based.  A byte that is not valid UTF-8 becomes a character of the range U+DC80
/// to U+DCFF and goes out as that byte again, so any byte string, a file name for instance, makes
/// the round trip unchanged.
///
/// Ownership: keeps a copy of what it is given.  The UTF-8 text and the code points handed out stay
///            valid while the string lives unchanged.
/// Errors:    positions and counts outside the text are clipped to it; the number conversions
///            report a format that they do not accept.  Running out of memory ends the process.
/// Threads:   distinct strings are independent; one string must not be changed by one thread
///            while another uses it.
class VOR_API VorUnicodeString {
 public:
  /// Which ends Strip works on.
  enum StripMode { Leading = 0, Trailing = 1, Both = 2 };

  VorUnicodeString() noexcept = default;
  VorUnicodeString(const char* utf8) noexcept;
  /// \a character repeated \a count times.  A code point that no UTF-8 text can hold becomes
  /// U+FFFD.
  VorUnicodeString(VorUnicodeChar character, int count) noexcept;
  VorUnicodeString(const VorUnicodeString& other) noexcept = default;
  VorUnicodeString(VorUnicodeString&& other) noexcept = default;
  ~VorUnicodeString() = default;

  VorUnicodeString& operator=(const VorUnicodeString& other) noexcept = default;
  VorUnicodeString& operator=(VorUnicodeString&& other) noexcept = default;

  /// Appends \a text.  Raw bytes that make up a character together become that character.
  void Append(const VorUnicodeString& text) noexcept;

  /// Makes this the text of \a number under a printf format with exactly one integer conversion
  /// (d, i, u, o, x or X, with flags, width and precision as wanted; length modifiers are
  /// accepted and a long is formatted in any case).  Returns 0; 1 for any other format, the text
  /// then stays as it was.
  int BuildFromNum(long number, const char* format = "%ld") noexcept;

  /// Reads the number at the start of the text under a scanf format with exactly one integer
  /// conversion (d, i, u, o, x or X), and stores it in *out.  Returns 0; 1 when the format is
  /// another, the text does not start with such a number, or the number does not fit an int;
  /// *out then stays as it was.
  int ConvertToNum(int* out, const char* format = "%d") const noexcept;

  /// The UTF-8 text; never null.
  operator const char*() const { return _utf8.c_str(); }
  const char* CastToCharPtr() const { return _utf8.c_str(); }

  /// The code points, as many as GetLengthInChar tells; never null.
  const char32_t* GetCodePoints() const { return _characters.data(); }

  /// The number of characters.
  int GetLengthInChar() const;

  /// 1 if no text was ever given, or it was reset or is empty; else 0.
  int IsNull() const { return _characters.empty(); }

  /// Makes the string empty.
  void Reset();

  /// The \a count characters from 0-based \a start, fewer where the text ends before.
  VorUnicodeString SubString(int start, int count) const noexcept;

  /// A copy without the run of \a character at the ends that \a mode names.
  VorUnicodeString Strip(StripMode mode, VorUnicodeChar character) const noexcept;

  /// The character at a 0-based position; U+0000 outside the text.
  template <std::integral Index>
  VorUnicodeChar operator[](Index position) const {
    const auto offset = static_cast<std::size_t>(position);  // a negative one becomes huge
    return offset < _characters.size() ? VorUnicodeChar(_characters[offset]) : VorUnicodeChar();
  }

  friend bool operator==(const VorUnicodeString& left, const VorUnicodeString& right) {
    return left._characters == right._characters;
  }
  friend bool operator==(const VorUnicodeString& left, const char* right) {
    return left._utf8 == (right == nullptr ? "" : right);
  }
  /// Order by code points.
  friend std::strong_ordering operator<=>(const VorUnicodeString& left,
                                          const VorUnicodeString& right) {
    return left._characters <=> right._characters;
  }

 private:
  explicit VorUnicodeString(std::u32string characters) noexcept;

  std::u32string _characters;
  std::string _utf8;  // always the encoded form of _characters, so that readers never write
};

/// Writes the UTF-8 text.
VOR_API std::ostream& operator<<(std::ostream& stream, const VorUnicodeString& text);

#endif  // VOR_BASE_VORUNICODESTRING_H
