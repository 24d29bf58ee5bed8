#ifndef VOR_CONTAINERS_VORHASHRWMAPITERATORREF_H
#define VOR_CONTAINERS_VORHASHRWMAPITERATORREF_H

#include "../base/Export.h"
#include "VorHashSCMapIterator.h"

/// A walk over a hash map that can be started again, as VorHashRWMap keeps it.
///
/// Ownership and threads: as VorHashSCMapIterator.
class VOR_API VorHashRWMapIteratorRef : public VorHashSCMapIterator {
 public:
  using VorHashSCMapIterator::VorHashSCMapIterator;

  /// Moves back before the first pair.
  virtual void RewindIterator();
};

#endif  // VOR_CONTAINERS_VORHASHRWMAPITERATORREF_H
