#ifndef VOR_CONTAINERS_VORSTRINGPOOL_H
#define VOR_CONTAINERS_VORSTRINGPOOL_H

#include "../base/Export.h"

/// Allocates runs of bytes from large blocks and frees them only all at once.
///
/// A hash map that is given a pool keeps its key copies there and saves one allocation for each
/// key.
///
/// Ownership: the pool owns every run that it allocated, until clear or its destruction.
/// Errors:    a refused run is null, with a message on standard output.
/// Threads:   not synchronised; distinct pools are independent.
class VOR_API VorStringPool {
 public:
  VorStringPool() = default;
  VorStringPool(const VorStringPool&) = delete;
  VorStringPool& operator=(const VorStringPool&) = delete;
  ~VorStringPool();

  /// \a n bytes, not aligned and not initialised.  A block holds 65,532 bytes.  A run that does not
  /// fit into the rest of the current block starts a new block, and the rest stays unused.  Null if
  /// \a n is larger than a block or negative, and if there is no memory.
  char* alloc(int n);

  /// A copy of \a s; null if alloc fails or \a s is null.
  char* create(const char* s);

  /// Frees all blocks, and with them every run.
  void clear();

 private:
  struct Block;

  Block* _current = nullptr;  // the newest block, which links to the older ones
  int _remaining = 0;         // bytes free at its end
};

#endif  // VOR_CONTAINERS_VORSTRINGPOOL_H
