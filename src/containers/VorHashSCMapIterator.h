#ifndef VOR_CONTAINERS_VORHASHSCMAPITERATOR_H
#define VOR_CONTAINERS_VORHASHSCMAPITERATOR_H

#include "base/Export.h"
#include "base/VorMap.h"

/// A walk over the pairs that a hash map had when the walk was taken.
///
/// Ownership: refers to the map's key copies: valid only while the map does not change.
/// Errors:    a pair beyond the capacity is refused with a message on standard output.
/// Threads:   used by one thread at a time.
class VOR_API VorHashSCMapIterator : public VorMapIterator {
 public:
  /// A walk with room for \a size pairs and none in it.  Its room is 0 for a negative size and
  /// where there is no memory.
  explicit VorHashSCMapIterator(int size);
  ~VorHashSCMapIterator() override;

  /// The pairs that there is room for.
  int GetRoom() const { return _size; }

  /// Moves on; non-zero while there is room for a pair at that position, whether one was inserted
  /// or not.  A walk taken from a map is always full.
  int next() override;

  /// The current pair.  Only after next gave non-zero; positions are not checked.
  const char* getKey() override;
  void* getValue() override;

  /// Adds a pair behind those already held.
  void insert(const char* key, void* value) override;

 protected:
  int _position = -1;  // 0-based; -1 before the first next

 private:
  int _size;           // pairs that there is room for
  const char** _keys;  // null when there is room for none
  void** _values;
  int _inserted = 0;  // pairs held
};

#endif  // VOR_CONTAINERS_VORHASHSCMAPITERATOR_H
