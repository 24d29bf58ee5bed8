#ifndef VOR_BASE_VORUNICODESTRING_H
#define VOR_BASE_VORUNICODESTRING_H

#include <compare>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string>

#include "Export.h"
#include "VorUnicodeChar.h"

/// A string of Unicode characters with value semantics.
///
/// Text is UTF-8 on input and output.  Lengths and positions count characters, not bytes; positions
/// are 0-based.  A byte that is not valid UTF-8 becomes a character of the range U+DC80 to U+DCFF
/// and is written as that byte on output.  Any byte string, such as a file name, is therefore
/// unchanged after the round trip.
///
/// Ownership: keeps a copy of its text.  The UTF-8 text and the code points that it returns are
///            valid until the string changes or is destroyed.
/// Errors:    positions and counts outside the text are clipped to it.  The number conversions
///            report a format that they do not accept.  Running out of memory ends the process.
/// Threads:   distinct strings are independent; one string must not be changed by one thread
///            while another uses it.
class VOR_API VorUnicodeString {
 public:
  /// Which ends Strip works on.
  enum StripMode { Leading = 0, Trailing = 1, Both = 2 };

  VorUnicodeString() noexcept = default;
  VorUnicodeString(const char* utf8) noexcept;
  /// \a character repeated \a count times.  A code point that UTF-8 cannot encode becomes U+FFFD.
  VorUnicodeString(VorUnicodeChar character, int count) noexcept;
  VorUnicodeString(const VorUnicodeString& other) noexcept = default;
  VorUnicodeString(VorUnicodeString&& other) noexcept = default;
  ~VorUnicodeString() = default;

  VorUnicodeString& operator=(const VorUnicodeString& other) noexcept = default;
  VorUnicodeString& operator=(VorUnicodeString&& other) noexcept = default;

  /// Appends \a text.  If invalid bytes at the end of this text and at the start of \a text form a
  /// valid character together, they become that character.
  void Append(const VorUnicodeString& text) noexcept;

  /// Replaces the text by \a number in a printf format with exactly one integer conversion: d, i,
  /// u, o, x or X, with any flags, width and precision.  Length modifiers have no effect; the whole
  /// long is formatted.  For any other format, returns 1 and leaves the text unchanged; otherwise
  /// returns 0.
  int BuildFromNum(long number, const char* format = "%ld") noexcept;

  /// Reads the number at the start of the text in a scanf format with exactly one integer
  /// conversion (d, i, u, o, x or X) and stores it in *out.  Returns 0.  Returns 1, with *out
  /// unchanged, if the format has any other form, if the text does not start with such a number, or
  /// if the number does not fit in an int.
  int ConvertToNum(int* out, const char* format = "%d") const noexcept;

  /// The UTF-8 text; never null.
  operator const char*() const { return _utf8.c_str(); }
  const char* CastToCharPtr() const { return _utf8.c_str(); }
  // As a condition the pointer would be true even for the empty text.
  explicit operator bool() const = delete;  // ask for !IsNull() instead

  /// The code points, GetLengthInChar of them; never null.
  const char32_t* GetCodePoints() const { return _characters.data(); }

  /// The number of characters.
  int GetLengthInChar() const;

  /// 1 if the text is empty, else 0.
  int IsNull() const { return _characters.empty(); }

  /// Makes the string empty.
  void Reset();

  /// The \a count characters from 0-based \a start, or fewer if the text ends earlier.
  VorUnicodeString SubString(int start, int count) const noexcept;

  /// A copy without the occurrences of \a character at the start, at the end or at both.
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
  std::string _utf8;  // the encoded form of _characters at all times: const calls change nothing
};

/// Writes the UTF-8 text.
VOR_API std::ostream& operator<<(std::ostream& stream, const VorUnicodeString& text);

#endif  // VOR_BASE_VORUNICODESTRING_H
