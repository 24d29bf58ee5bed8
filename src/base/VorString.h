#ifndef VOR_BASE_VORSTRING_H
#define VOR_BASE_VORSTRING_H

#include <compare>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "Export.h"

/// The types that built-in pointer arithmetic accepts as offset: integers, characters, enumerators.
template <typename T>
concept VorOffset = std::convertible_to<T, std::ptrdiff_t> && !std::convertible_to<T, const char*>;

/// An 8-bit character string with value semantics, the text type of the library's calls.
///
/// Positions are 0-based; a search that finds nothing returns a negative position.  Lengths are in
/// bytes; a length above the largest int is returned as the largest int.  A null const char* counts
/// as the empty text.
///
/// A text may contain NUL bytes.  Copies, == and FindPosition see them.  The conversion to
/// const char* and the order of < and > end at the first one, as strcmp does.
///
/// Ownership: keeps a copy of its text.  The characters from the conversion to const char*, from
///            CastToCharPtr and from View are valid until the string changes or is destroyed.
/// Errors:    positions and counts outside the text are clipped to it; running out of memory ends
///            the process.
/// Threads:   distinct strings are independent; one string must not be changed by one thread
///            while another uses it.
class VOR_API VorString {
 public:
  VorString() noexcept = default;
  VorString(const char* text) noexcept : _text(text == nullptr ? "" : text) {}
  VorString(std::string text) noexcept : _text(std::move(text)) {}
  explicit VorString(std::string_view text) noexcept : _text(text) {}
  VorString(const VorString& other) noexcept = default;
  VorString(VorString&& other) noexcept = default;
  ~VorString() = default;

  VorString& operator=(const VorString& other) noexcept = default;
  VorString& operator=(VorString&& other) noexcept = default;
  VorString& operator=(const char* text) noexcept;

  VorString& operator+=(const char* text) noexcept;
  VorString& operator+=(const VorString& text) noexcept;

  /// The characters with a NUL at the end; never null.
  operator const char*() const { return _text.c_str(); }
  const char* CastToCharPtr() const { return _text.c_str(); }
  // As a condition the pointer would be true even for the empty text.
  explicit operator bool() const = delete;  // ask for Length() > 0 instead

  /// All bytes, NUL bytes included.
  std::string_view View() const { return _text; }

  /// The byte at a 0-based position; '\0' outside the text.
  template <std::integral Index>
  char operator[](Index position) const {
    return std::in_range<std::size_t>(position) && static_cast<std::size_t>(position) < _text.size()
               ? _text[static_cast<std::size_t>(position)]
               : '\0';
  }

  /// The number of bytes.  The three functions are the same.
  int GetLengthInChar() const;
  int Length() const { return GetLengthInChar(); }
  int length() const { return GetLengthInChar(); }

  /// The 0-based position of the first occurrence of \a text at or after \a start; -1 if there is
  /// none.  An empty text is found at every position up to the length.
  int FindPosition(const VorString& text, int start = 0) const;

  /// The \a count bytes from 0-based \a start, or fewer if the text ends earlier.
  VorString SubString(unsigned start, unsigned count) const noexcept;

  /// Removes \a count bytes from 0-based \a start.
  void Remove(int start, int count);

  /// Replaces the first occurrence of \a oldText, if there is one, by \a newText.  To replace all,
  /// repeat the call while FindPosition finds \a oldText.
  void ReplaceSubString(const VorString& oldText, const VorString& newText) noexcept;

  /// Upper-cases the letters a to z in place; other bytes stay, whatever the locale.
  void ToUpper();

 private:
  std::string _text;
};

// The conversion to const char* makes every built-in pointer operator a candidate.  Therefore each
// combination of operands is declared: no call is ambiguous and none compares addresses.

VOR_API VorString operator+(const VorString& left, const VorString& right) noexcept;
VOR_API VorString operator+(const VorString& left, const char* right) noexcept;
VOR_API VorString operator+(const char* left, const VorString& right) noexcept;
// These would be pointer arithmetic.
template <VorOffset Offset>
void operator+(const VorString& text, Offset offset) = delete;
template <VorOffset Offset>
void operator+(Offset offset, const VorString& text) = delete;
template <VorOffset Offset>
void operator-(const VorString& text, Offset offset) = delete;

inline bool operator==(const VorString& left, const VorString& right) {
  return left.View() == right.View();
}
inline bool operator==(const VorString& left, const char* right) {
  return left.View() == std::string_view(right == nullptr ? "" : right);
}

/// Order by unsigned bytes up to the first NUL, as strcmp.
VOR_API std::weak_ordering operator<=>(const VorString& left, const VorString& right);
VOR_API std::weak_ordering operator<=>(const VorString& left, const char* right);

/// Writes all bytes of \a text.
VOR_API std::ostream& operator<<(std::ostream& stream, const VorString& text);

#endif  // VOR_BASE_VORSTRING_H
