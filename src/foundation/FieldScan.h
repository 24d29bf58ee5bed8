#ifndef VOR_FOUNDATION_FIELDSCAN_H
#define VOR_FOUNDATION_FIELDSCAN_H

#include <cstddef>
#include <string_view>

#include "foundation/FindText.h"

namespace vor {

/// Finds the non-empty fields of a text between separators, without copying them.
///
/// Both texts must outlive the object.  An empty separator separates nothing.
class FieldScan {
 public:
  FieldScan(std::string_view text, std::string_view separator)
      : _text(text), _separator(separator) {}

  /// Stores the next field in *field.  Returns false if there is none.
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
