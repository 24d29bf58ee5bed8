#ifndef VOR_CONTAINERS_VORHASHSCMAPITERATOR_H
#define VOR_CONTAINERS_VORHASHSCMAPITERATOR_H

#include "../base/Export.h"
#include "../base/VorMap.h"

/// A walk over the pairs that a hash map had when the walk was taken.
///
/// Ownership: refers to the map's key copies: valid only while the map does not change.
/// Errors:    an insertion without room is refused with a message on standard output.
/// Threads:   used by one thread at a time.
class VOR_API VorHashSCMapIterator : public VorMapIterator {
 public:
  /// An empty walk with room for \a size pairs.  Its room is 0 for a negative size and if there is
  /// no memory.
  explicit VorHashSCMapIterator(int size);
  ~VorHashSCMapIterator() override;

  /// The number of pairs that fit.
  int GetRoom() const { return _size; }

  /// Moves to the next pair.  Returns non-zero while the position is within the room, even if no
  /// pair was inserted there.  A walk taken from a map is always full.
  int next() override;

  /// The current pair.  Call them only after next returned non-zero; positions are not checked.
  const char* getKey() override;
  void* getValue() override;

  /// Adds a pair after those already held.
  void insert(const char* key, void* value) override;

 protected:
  int _position = -1;  // 0-based; -1 before the first next

 private:
  int _size;           // pairs that fit
  const char** _keys;  // null when there is room for none
  void** _values;
  int _inserted = 0;  // pairs held
};

#endif  // VOR_CONTAINERS_VORHASHSCMAPITERATOR_H
