#ifndef VOR_CONTAINERS_VORSTRINGPOOL_H
#define VOR_CONTAINERS_VORSTRINGPOOL_H

#include "base/Export.h"

/// Hands out runs of bytes from large blocks and frees them only all at once.
///
/// A hash map that is given a pool keeps its key copies there, which costs no allocation a key.
///
/// Ownership: the pool owns every byte it handed out, until clear or its destruction.
/// Errors:    a run that cannot be had is null, with a message on standard output.
/// Threads:   not synchronised; distinct pools are independent.
class VOR_API VorStringPool {
 public:
  VorStringPool() = default;
  VorStringPool(const VorStringPool&) = delete;
  VorStringPool& operator=(const VorStringPool&) = delete;
  ~VorStringPool();

  /// \a n bytes, not aligned and not initialised.  At most 65,532 fit a block; a run that does not
  /// fit what is left of the current block opens a new one and abandons the rest.  Null for a
  /// larger or negative \a n and where there is no memory.
  char* alloc(int n);

  /// A copy of \a s; null if alloc fails or \a s is null.
  char* create(const char* s);

  /// Frees all blocks: every run that was handed out is gone.
  void clear();

 private:
  struct Block;

  Block* _current = nullptr;  // the newest block, which links to the older ones
  int _remaining = 0;         // bytes free at its end
};

#endif  // VOR_CONTAINERS_VORSTRINGPOOL_H
