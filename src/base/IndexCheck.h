#ifndef VOR_BASE_INDEXCHECK_H
#define VOR_BASE_INDEXCHECK_H

#include <cstddef>

namespace vor {

/// Reports a 1-based list position outside 1 to size on standard error and aborts: it is a bug of
/// the caller, and going on would read or change memory that is not the list's.
[[noreturn]] void ReportBadPosition(long long position, std::size_t size);

/// The 0-based offset of a 1-based position that the caller promises to be valid.
inline std::size_t CheckedOffset(long long position, std::size_t size) {
  if (position < 1 || static_cast<unsigned long long>(position) > size) {
    ReportBadPosition(position, size);
  }
  return static_cast<std::size_t>(position) - 1;
}

}  // namespace vor

#endif  // VOR_BASE_INDEXCHECK_H
