#ifndef VOR_FOUNDATION_XMLENTITIES_H
#define VOR_FOUNDATION_XMLENTITIES_H

#include <string_view>

namespace vor {

/// The entity of an XML special character; empty for any other.
constexpr std::string_view XmlEntityOf(char32_t c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&apos;";
    default:
      return {};
  }
}

}  // namespace vor

#endif  // VOR_FOUNDATION_XMLENTITIES_H
