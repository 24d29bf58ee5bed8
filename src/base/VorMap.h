#ifndef VOR_BASE_VORMAP_H
#define VOR_BASE_VORMAP_H

#include "Export.h"

/// A walk over the pairs of a VorMap, from VorMap::getIterator.
///
/// Call next, and while it returns non-zero read getKey and getValue.  The keys are the map's own
/// copies, so a walk is valid only until the map changes.
///
/// Threads: as for the map.
class VOR_API VorMapIterator {
 public:
  VorMapIterator(const VorMapIterator&) = delete;
  VorMapIterator& operator=(const VorMapIterator&) = delete;

  /// Moves to the next pair; the first call moves to the first one.  Returns 0 after the last pair.
  virtual int next() = 0;
  /// The key of the current pair.
  virtual const char* getKey() = 0;
  /// The value of the current pair.
  virtual void* getValue() = 0;

  virtual ~VorMapIterator() = default;

  /// Adds a pair at the end; the map calls it while it prepares the walk.
  virtual void insert(const char* key, void* value) = 0;

 protected:
  VorMapIterator() = default;
};

/// A map from NUL-terminated keys to untyped pointers.
///
/// Ownership: implementations copy the keys and never own the values.
/// Threads:   implementations do not lock; callers serialise.
class VOR_API VorMap {
 public:
  VorMap(const VorMap&) = delete;
  VorMap& operator=(const VorMap&) = delete;

  /// The number of pairs.
  virtual int getSize() = 0;
  /// Returns 1 and stores the value of \a key in *value if the key is present.  Otherwise returns 0
  /// and leaves *value unchanged.
  virtual int search(const char* key, void** value) = 0;
  /// Adds a pair and returns the map's copy of the key.  Returns null and changes nothing if \a key
  /// is null or already present.
  virtual const char* insert(const char* key, void* value) = 0;
  /// Removes the pair of \a key, if there is one.
  virtual void remove(const char* key) = 0;
  /// Removes all pairs.
  virtual void clear() = 0;
  /// A new walk over all pairs, which the caller deletes.
  virtual VorMapIterator* getIterator() = 0;

  virtual ~VorMap() = default;

 protected:
  VorMap() = default;
};

#endif  // VOR_BASE_VORMAP_H
