#ifndef VOR_BASE_VORCOLLEC_H
#define VOR_BASE_VORCOLLEC_H

#include "base/Export.h"

/// What all collections have in common.
class VOR_API VorCollec {
 public:
  /// What becomes of the storage of a collection that is emptied.
  enum MemoryHandling : int {
    ReleaseMemory = 0,  ///< give it back
    KeepMemory = 1      ///< keep it, because the collection is about to be filled again
  };
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
