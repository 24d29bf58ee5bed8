#ifndef VOR_FOUNDATION_FIELDSCAN_H
#define VOR_FOUNDATION_FIELDSCAN_H

#include <string.h>

#include <cstddef>
#include <string_view>

namespace vor {

/// The position of the first \a needle in \a text at or after \a from; npos if there is none or
/// \a needle is empty.  The time stays linear for a long needle that almost matches everywhere.
inline std::size_t FindText(std::string_view text, std::string_view needle, std::size_t from) {
  constexpr std::size_t kLongNeedle = 32;
  if (needle.empty() || from > text.size()) return std::string_view::npos;
  if (needle.size() < kLongNeedle) return text.find(needle, from);
  const void* found = memmem(text.data() + from, text.size() - from, needle.data(), needle.size());
  if (found == nullptr) return std::string_view::npos;
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

/// Walks the non-empty fields that a separator leaves of a text, without copying them.
///
/// Both texts must outlive the walk.  An empty separator separates nothing.
class FieldScan {
 public:
  FieldScan(std::string_view text, std::string_view separator)
      : _text(text), _separator(separator) {}

  /// Stores the next field in *field; false when there is none left.
  bool Next(std::string_view* field) {
    while (_start < _text.size()) {
      const std::size_t found = FindText(_text, _separator, _start);
      const std::size_t end = found == std::string_view::npos ? _text.size() : found;
      *field = _text.substr(_start, end - _start);
      _start = end + _separator.size();
      if (!field->empty()) return true;
    }
    return false;
  }

 private:
  std::string_view _text;
  std::string_view _separator;
  std::size_t _start = 0;
};

}  // namespace vor

#endif  // VOR_FOUNDATION_FIELDSCAN_H
