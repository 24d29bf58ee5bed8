#ifndef VOR_FOUNDATION_FIELDSPLITTING_H
#define VOR_FOUNDATION_FIELDSPLITTING_H

#include <cstddef>
#include <string_view>

#include "foundation/FieldScan.h"
#include "foundation/FindText.h"

namespace vor {

// The splitting rules of the overloads of Split.  The class Fields stores the fields; it has
// Clear(), Add(std::string_view) and int Count().  Clear() must not destroy the text or the
// separator.

inline constexpr const char* kBlank = " ";

/// Splits at each separator; returns the number of fields.
template <typename Fields>
int SplitAll(std::string_view text, Fields&& fields, std::string_view separator) {
  fields.Clear();
  FieldScan scan(text, separator);
  std::string_view field;
  while (scan.Next(&field)) fields.Add(field);
  return fields.Count();
}

/// Splits into at most \a count fields; returns their number.
template <typename Fields>
int SplitUpTo(int count, std::string_view text, Fields&& fields, std::string_view separator) {
  fields.Clear();
  std::size_t start = 0;
  for (int found = 1; found < count; ++found) {
    const std::size_t position = FindText(text, separator, start);
    if (position == std::string_view::npos) break;
    if (start < position) fields.Add(text.substr(start, position - start));
    start = position + 1;  // callers rely on skipping one byte, whatever the separator's length
  }
  if (start < text.size()) fields.Add(text.substr(start));
  return fields.Count();
}

/// Splits at blanks into at most \a count fields, then adds empty texts until there are \a count.
/// Returns \a count.
template <typename Fields>
int SplitPadded(int count, std::string_view text, Fields&& fields) {
  int size = SplitUpTo(count, text, fields, kBlank);
  while (size < count) {
    fields.Add("");
    if (fields.Count() == size) break;  // an index contains the empty text only once
    size = fields.Count();
  }
  return count;
}

}  // namespace vor

#endif  // VOR_FOUNDATION_FIELDSPLITTING_H
