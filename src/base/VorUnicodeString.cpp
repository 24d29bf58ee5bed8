#include "base/VorUnicodeString.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <optional>
#include <ostream>
#include <string_view>

#include "base/NullText.h"

// The text is stored twice: as code points for everything that counts characters, and as UTF-8 for
// everything that leaves the object.  Operations that change the text update both, so const
// operations write nothing and may run on several threads at once.
//
// A byte b that is not part of a valid UTF-8 sequence becomes the code point U+DC00 + b, called a
// raw byte here, and is encoded as the byte b again.  Valid UTF-8 never contains these code points
// (they are surrogates), so code points and bytes correspond one to one, and comparing the code
// points compares the bytes.
//
// This holds only if neighbouring raw bytes never form a valid sequence.  Decoding and SubString
// cannot produce such neighbours.  Append can, where the raw bytes at the end of one text meet
// those at the start of the other; it decodes this seam again.
//
// The number conversions do not pass the caller's format to printf or scanf.  They parse it and
// accept only one integer conversion, because any other would read arguments that do not exist.

namespace {

constexpr char32_t kRawByteBase = 0xDC00;  // a raw byte b becomes kRawByteBase + b
constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kMostBytes = 4;  // of one character

bool IsRawByte(char32_t c) {
  return c >= 0xDC80 && c <= 0xDCFF;
}
bool IsSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}

// Stores in *c the first character of text and returns its length in bytes; 0 if text does not
// begin with a valid UTF-8 sequence.  Overlong forms, surrogates and values above U+10FFFF are not
// valid.
std::size_t DecodeSequence(std::string_view text, char32_t* c) {
  const unsigned char lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) {
    *c = lead;
    return 1;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  char32_t value = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned char next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return 0;
    value = value << 6 | (next & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kSmallest[length] || value > 0x10FFFF || IsSurrogate(value)) return 0;
  *c = value;
  return length;
}

std::u32string Decode(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  while (!text.empty()) {
    char32_t c = 0;
    std::size_t length = DecodeSequence(text, &c);
    if (length == 0) {
      c = kRawByteBase + static_cast<unsigned char>(text[0]);
      length = 1;
    }
    characters.push_back(c);
    text.remove_prefix(length);
  }
  return characters;
}

void Encode(char32_t c, std::string* out) {
  const auto put = [out](char32_t byte) { out->push_back(static_cast<char>(byte)); };
  if (IsRawByte(c)) {
    put(c - kRawByteBase);
    return;
  }
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6);
    put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | c >> 18);
    put(0x80 | (c >> 12 & 0x3F));
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  }
}

// The parts of a printf or scanf format with one integer conversion.
struct NumberFormat {
  std::string prefix;  // literal text before the conversion, "%%" already folded
  std::string flags;   // flags, width and precision, as in the format
  std::size_t width = 0;
  char conversion = 'd';
  std::string suffix;
};

// Removes the literal text at the start of *format, up to a conversion or the end, and returns it.
std::string TakeLiteral(std::string_view* format) {
  std::string literal;
  while (!format->empty()) {
    if (format->front() == '%') {
      if (!format->starts_with("%%")) break;
      format->remove_prefix(1);
    }
    literal.push_back(format->front());
    format->remove_prefix(1);
  }
  return literal;
}

std::string_view TakeAnyOf(std::string_view* format, std::string_view allowed) {
  const std::string_view taken = format->substr(0, format->find_first_not_of(allowed));
  format->remove_prefix(taken.size());
  return taken;
}

std::optional<NumberFormat> ParseNumberFormat(const char* text) {
  if (text == nullptr) return std::nullopt;
  std::string_view rest = text;
  NumberFormat format;
  format.prefix = TakeLiteral(&rest);
  if (rest.empty()) return std::nullopt;
  rest.remove_prefix(1);  // '%'
  constexpr std::string_view kDigits = "0123456789";
  format.flags = TakeAnyOf(&rest, "-+ #0");
  const std::string width(TakeAnyOf(&rest, kDigits));
  format.width = strtoul(width.c_str(), nullptr, 10);
  format.flags += width;
  if (rest.starts_with('.')) {
    rest.remove_prefix(1);
    format.flags += "." + std::string(TakeAnyOf(&rest, kDigits));
  }
  TakeAnyOf(&rest, "hljzt");
  constexpr std::string_view kConversions = "diuoxX";
  if (rest.empty() || kConversions.find(rest.front()) == std::string_view::npos ||
      format.flags.size() > 16) {
    return std::nullopt;
  }
  format.conversion = rest.front();
  rest.remove_prefix(1);
  format.suffix = TakeLiteral(&rest);
  return rest.empty() ? std::optional(format) : std::nullopt;
}

int BaseOf(char conversion) {
  switch (conversion) {
    case 'i':
      return 0;
    case 'o':
      return 8;
    case 'x':
    case 'X':
      return 16;
    default:
      return 10;
  }
}

}  // namespace

VorUnicodeString::VorUnicodeString(const char* utf8) noexcept
    : _characters(Decode(vor::TextOrEmpty(utf8))), _utf8(vor::TextOrEmpty(utf8)) {}

VorUnicodeString::VorUnicodeString(VorUnicodeChar character, int count) noexcept
    : VorUnicodeString(std::u32string(count < 0 ? 0 : static_cast<std::size_t>(count),
                                      character.GetCodePoint())) {}

VorUnicodeString::VorUnicodeString(std::u32string characters) noexcept
    : _characters(std::move(characters)) {
  _utf8.reserve(_characters.size());
  for (char32_t& c : _characters) {
    if (!IsRawByte(c) && (c > 0x10FFFF || IsSurrogate(c))) c = kReplacement;
    Encode(c, &_utf8);
  }
}

void VorUnicodeString::Append(const VorUnicodeString& text) noexcept {
  std::size_t tail = 0;  // raw bytes at the end that may be the start of a character
  while (tail < kMostBytes - 1 && tail < _characters.size() &&
         IsRawByte(_characters[_characters.size() - 1 - tail])) {
    ++tail;
  }
  if (tail == 0 || !IsRawByte(text[0].GetCodePoint())) {
    _characters.append(text._characters);
    _utf8.append(text._utf8);
    return;
  }
  const std::u32string joined = Decode(_utf8.substr(_utf8.size() - tail) + text._utf8);
  _utf8.append(text._utf8);
  _characters.resize(_characters.size() - tail);
  _characters.append(joined);
}

int VorUnicodeString::BuildFromNum(long number, const char* format) noexcept {
  const std::optional<NumberFormat> parsed = ParseNumberFormat(format);
  if (!parsed) return 1;
  const std::string conversion = "%" + parsed->flags + "l" + parsed->conversion;
  // The format was checked above: one integer conversion, always with the length of a long.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int size = snprintf(nullptr, 0, conversion.c_str(), number);
  if (size < 0) return 1;
  std::string digits(static_cast<std::size_t>(size) + 1, '\0');
  snprintf(digits.data(), digits.size(), conversion.c_str(), number);
#pragma GCC diagnostic pop
  digits.pop_back();
  *this = VorUnicodeString((parsed->prefix + digits + parsed->suffix).c_str());
  return 0;
}

int VorUnicodeString::ConvertToNum(int* out, const char* format) const noexcept {
  const std::optional<NumberFormat> parsed = ParseNumberFormat(format);
  if (!parsed || !std::string_view(_utf8).starts_with(parsed->prefix)) return 1;
  // As in scanf: blanks before the number do not count, and a width limits its characters.
  std::string digits = _utf8.substr(parsed->prefix.size());
  digits.erase(0, digits.find_first_not_of(" \t\n\v\f\r"));
  if (parsed->width > 0) digits.resize(std::min(digits.size(), parsed->width));
  char* end = nullptr;
  errno = 0;
  const long value = strtol(digits.c_str(), &end, BaseOf(parsed->conversion));
  if (end == digits.c_str() || errno == ERANGE || value < INT_MIN || value > INT_MAX) return 1;
  *out = static_cast<int>(value);
  return 0;
}

int VorUnicodeString::GetLengthInChar() const {
  return static_cast<int>(std::min<std::size_t>(_characters.size(), INT_MAX));
}

void VorUnicodeString::Reset() {
  _characters.clear();
  _utf8.clear();
}

VorUnicodeString VorUnicodeString::SubString(int start, int count) const noexcept {
  const std::size_t first = static_cast<std::size_t>(std::max(start, 0));
  if (count <= 0 || first >= _characters.size()) return VorUnicodeString();
  return VorUnicodeString(_characters.substr(first, static_cast<std::size_t>(count)));
}

VorUnicodeString VorUnicodeString::Strip(StripMode mode, VorUnicodeChar character) const noexcept {
  const char32_t c = character.GetCodePoint();
  const std::size_t first = mode == Trailing ? 0 : _characters.find_first_not_of(c);
  if (first == std::u32string::npos) return VorUnicodeString();
  const std::size_t last =
      mode == Leading ? _characters.size() : _characters.find_last_not_of(c) + 1;
  return VorUnicodeString(_characters.substr(first, last - first));
}

std::ostream& operator<<(std::ostream& stream, const VorUnicodeString& text) {
  return stream << text.CastToCharPtr();
}
