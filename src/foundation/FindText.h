#ifndef VOR_FOUNDATION_FINDTEXT_H
#define VOR_FOUNDATION_FINDTEXT_H

#include <string.h>

#include <cstddef>
#include <string_view>

namespace vor {

/// The position of the first \a needle in \a text at or after \a from; npos if there is none or
/// \a needle is empty.  The time is linear even for a long needle that almost matches everywhere.
inline std::size_t FindText(std::string_view text, std::string_view needle, std::size_t from) {
  constexpr std::size_t kLongNeedle = 32;
  if (needle.empty() || from > text.size()) return std::string_view::npos;
  if (needle.size() < kLongNeedle) return text.find(needle, from);
  const void* found = memmem(text.data() + from, text.size() - from, needle.data(), needle.size());
  if (found == nullptr) return std::string_view::npos;
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

}  // namespace vor

#endif  // VOR_FOUNDATION_FINDTEXT_H
