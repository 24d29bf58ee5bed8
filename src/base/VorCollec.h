#ifndef VOR_BASE_VORCOLLEC_H
#define VOR_BASE_VORCOLLEC_H

#include <cstddef>

#include "Export.h"

/// Definitions that all collections share.
class VOR_API VorCollec {
 public:
  /// Whether a collection that is emptied keeps or frees its storage.
  enum MemoryHandling : int {
    ReleaseMemory = 0,  ///< it is freed
    KeepMemory = 1      ///< it is kept, because the collection will be filled again
  };

  /// The 0-based offset of a 1-based \a position among \a size elements.
  ///
  /// A position outside 1 to \a size is a bug of the caller.  It is reported on standard error and
  /// ends the process with abort, because using it would read or change memory outside the
  /// collection.
  static std::size_t OffsetOf(long long position, std::size_t size) {
    if (position < 1 || static_cast<unsigned long long>(position) > size) {
      ReportBadPosition(position, size);
    }
    return static_cast<std::size_t>(position) - 1;
  }

 private:
  [[noreturn]] static void ReportBadPosition(long long position, std::size_t size);
};

/// Root class of the typed lists.
class VOR_API VorCollecRoot {
 public:
  virtual ~VorCollecRoot() = default;

 protected:
  VorCollecRoot() = default;
  VorCollecRoot(const VorCollecRoot&) = default;
  VorCollecRoot& operator=(const VorCollecRoot&) = default;
};

#endif  // VOR_BASE_VORCOLLEC_H
