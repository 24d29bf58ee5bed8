#ifndef VOR_BASE_NULLTEXT_H
#define VOR_BASE_NULLTEXT_H

namespace vor {

/// \a text, or the empty text for null.
constexpr const char* TextOrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

}  // namespace vor

#endif  // VOR_BASE_NULLTEXT_H
