#ifndef VOR_BASE_VORMAP_H
#define VOR_BASE_VORMAP_H

#include "base/Export.h"

/// A walk over the pairs of a VorMap, taken by VorMap::getIterator.
///
/// Call next, and while it gives non-zero read getKey and getValue.  The keys are the map's own
/// copies: a walk is valid only while the map does not change.
///
/// Threads: as the map it was taken from.
class VOR_API VorMapIterator {
 public:
  VorMapIterator(const VorMapIterator&) = delete;
  VorMapIterator& operator=(const VorMapIterator&) = delete;

  /// Moves to the next pair (to the first one at first); 0 when there is none.
  virtual int next() = 0;
  /// The key of the current pair.
  virtual const char* getKey() = 0;
  /// The value of the current pair.
  virtual void* getValue() = 0;

  virtual ~VorMapIterator() = default;

  /// Adds a pair behind those already held; called by the map while it makes the walk.
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
  /// 1, with the value of \a key in *value, if the key is present; else 0, *value unchanged.
  virtual int search(const char* key, void** value) = 0;
  /// Adds a pair.  Null if \a key is null or already present, which changes nothing.
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
