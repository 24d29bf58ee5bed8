#ifndef VOR_CONTAINERS_VORHASHRWMAP_H
#define VOR_CONTAINERS_VORHASHRWMAP_H

#include <memory>

#include "../base/Export.h"
#include "VorHashSCMap.h"

class VorHashRWMapIteratorRef;

/// A hash map for frequent walks and rare changes: it keeps a walk and rebuilds it only after a
/// change.
///
/// Ownership, errors and threads: as VorHashSCMap; getIteratorRef counts as a change.
class VOR_API VorHashRWMap : public VorHashSCMap {
 public:
  explicit VorHashRWMap(VorStringPool* pool);
  VorHashRWMap(int size, float loadFactor, VorStringPool* pool);
  ~VorHashRWMap() override;

  // Each of these calls makes the next getIteratorRef take a new walk, even if it changed nothing:
  // the insertion of a key that is present, the removal of one that is absent.
  const char* insert(const char* key, void* value) override;
  void remove(const char* key) override;
  void clear() override;

  /// A walk over all pairs, rewound to before the first one.  It is the same object as before if
  /// the map has not changed.  The map owns it; it is valid until the next change.  Null without
  /// memory.
  virtual VorHashRWMapIteratorRef* getIteratorRef();

 private:
  bool _modified = false;                              // since the walk was taken
  std::unique_ptr<VorHashRWMapIteratorRef> _iterator;  // null before the first walk
};

#endif  // VOR_CONTAINERS_VORHASHRWMAP_H
