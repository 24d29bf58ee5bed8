#ifndef VOR_CONTAINERS_VORHASHRWMAP_H
#define VOR_CONTAINERS_VORHASHRWMAP_H

#include "base/Export.h"
#include "containers/VorHashSCMap.h"

class VorHashRWMapIteratorRef;

/// A hash map that is walked often and changed rarely: it keeps a walk of its own and makes it
/// anew only after a change.
///
/// Ownership, errors and threads: as VorHashSCMap; getIteratorRef counts as a change.
class VOR_API VorHashRWMap : public VorHashSCMap {
 public:
  using VorHashSCMap::VorHashSCMap;
  ~VorHashRWMap() override;

  // Every change makes the next getIteratorRef take a new walk, also one that came to nothing: the
  // insertion of a key that is present, the removal of one that is absent.
  const char* insert(const char* key, void* value) override;
  void remove(const char* key) override;
  void clear() override;

  /// A walk over all pairs that stands before the first one: the same object as before if nothing
  /// changed in between.  The map owns it; it is valid until the next change.  Null without memory.
  virtual VorHashRWMapIteratorRef* getIteratorRef();

 private:
  bool _modified = false;                        // since the walk was taken
  VorHashRWMapIteratorRef* _iterator = nullptr;  // owned
};

#endif  // VOR_CONTAINERS_VORHASHRWMAP_H
