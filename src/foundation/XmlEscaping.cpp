#include "foundation/XmlEscaping.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "base/VorUnicodeString.h"
#include "foundation/XmlEntities.h"

namespace {

// Whether XML allows a character; not for tabs and line ends.  An invalid byte is a surrogate here.
bool IsAllowed(char32_t c) {
  return (c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c != 0xFFFE && c != 0xFFFF);
}

// Of the tab, the newline and the carriage return, those in kept stay as they are.
VorString Escape(std::string_view text, std::string_view kept) {
  std::string withoutNul(text);
  std::replace(withoutNul.begin(), withoutNul.end(), '\0', '\1');  // XML allows neither
  const VorUnicodeString characters(withoutNul.c_str());
  std::string escaped;
  escaped.reserve(text.size());
  for (int i = 0; i < characters.GetLengthInChar(); ++i) {
    const char32_t c = characters[i].GetCodePoint();
    if (const std::string_view entity = vor::XmlEntityOf(c); !entity.empty()) {
      escaped += entity;
    } else if (c == '\t' || c == '\n' || c == '\r') {
      const char byte = static_cast<char>(c);
      escaped += kept.find(byte) != std::string_view::npos
                     ? std::string(1, byte)
                     : "&#" + std::to_string(static_cast<int>(byte)) + ";";
    } else {
      escaped += IsAllowed(c) ? VorUnicodeString(characters[i], 1).CastToCharPtr() : "?";
    }
  }
  return VorString(std::move(escaped));
}

}  // namespace

VorString EscapeXml(const VorString& text) noexcept {
  return Escape(text.View(), "\t\n");
}

VorString EscapeXmlAttribute(const VorString& value) noexcept {
  return Escape(value.View(), "");
}
