#ifndef VOR_CONTAINERS_SORTEDARRAY_H
#define VOR_CONTAINERS_SORTEDARRAY_H

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cstddef>
#include <limits>

#include "foundation/Tracing.h"

namespace vor {

// Shared code of the sorted indexes.  An index has the public fields keys, values, count, capacity
// and step: keys[0] to keys[count - 1] are strictly ordered, and values[i] belongs to keys[i].
// Positions are 0-based.

/// The position of a key in a sorted array or, if the key is absent, the position for its
/// insertion.
struct SortedPlace {
  int position;
  bool isPresent;
};

/// Bisects \a count sorted keys.  \a compare returns the sign of the searched key against a stored
/// one; its Prefetch is called with the keys that may be compared next.
///
/// The loop never ends early, so that its choice compiles without a branch: on random keys a
/// mispredicted branch costs more than the comparisons that it saves.
template <typename Key, typename Compare>
SortedPlace FindPlace(const Key* keys, int count, Compare compare) {
  if (count == 0) return {0, false};
  const Key* first = keys;  // of the keys left; at the end the last one not after the searched one
  for (int size = count; size > 1;) {
    const int half = size / 2;
    size -= half;
    compare.Prefetch(first[size / 2]);
    compare.Prefetch(first[half + size / 2]);
    first = compare(first[half]) >= 0 ? first + half : first;
  }
  const int sign = compare(*first);
  return {static_cast<int>(first - keys) + (sign > 0), sign == 0};
}

/// The same for a key to be added.  It is compared with the last key first, so keys that arrive in
/// order cost one comparison each.
template <typename Key, typename Compare>
SortedPlace FindPlaceToAdd(const Key* keys, int count, Compare compare) {
  if (count == 0) return {0, false};
  const int sign = compare(keys[count - 1]);
  if (sign >= 0) return {sign == 0 ? count - 1 : count, sign == 0};
  return FindPlace(keys, count - 1, compare);
}

/// The position of a key that is present; -1 if it is absent.
inline int PositionOrMinusOne(SortedPlace place) {
  return place.isPresent ? place.position : -1;
}

/// Allocates the first arrays of an index without inline ones.  Returns their size; 0 if there is
/// no memory, and the first growth check tries again.
template <typename Key>
int AllocateArrays(Key*& keys, void**& values, int size) {
  keys = static_cast<Key*>(malloc(static_cast<std::size_t>(size) * sizeof(Key)));
  values = static_cast<void**>(malloc(static_cast<std::size_t>(size) * sizeof(void*)));
  return keys == nullptr || values == nullptr ? 0 : size;
}

/// Returns \a array with room for \a size elements; the first \a used ones are kept.  An inline
/// array is copied, any other reallocated.  Null if there is no memory.
template <typename T>
T* GrowArray(T* array, bool isInline, int used, int size) {
  const std::size_t bytes = static_cast<std::size_t>(size) * sizeof(T);
  if (!isInline) return static_cast<T*>(realloc(array, bytes));
  T* grown = static_cast<T*>(malloc(bytes));
  if (grown != nullptr) memcpy(grown, array, static_cast<std::size_t>(used) * sizeof(T));
  return grown;
}

/// Ensures that a slot is free even after one more key.  Otherwise the capacity grows by one step;
/// once it exceeds ten steps, the step becomes half of the capacity.  Ends the process if there is
/// no memory or an int cannot count the slots.
///
/// \a room is the real size of the arrays.  It at least doubles, so that the small steps of the
/// capacity do not copy the arrays each time.
template <typename Index>
void GrowForOneMore(Index& index, int& room, bool isInline = false) {
  // One text for all indexes; log filters match it.
  static constexpr char kMessage[] = "TAIndex::increaseAllocSize failed, memory allocation failed";
  static constexpr int kMax = std::numeric_limits<int>::max();

  if (index.count < index.capacity - 1) return;
  FATAL(index.step > kMax - index.capacity, kMessage);
  const int capacity = index.capacity + index.step;
  if (capacity > room) {
    const int size = std::max(capacity, room > kMax / 2 ? kMax : 2 * room);
    auto* keys = GrowArray(index.keys, isInline, index.count, size);
    auto* values = GrowArray(index.values, isInline, index.count, size);
    FATAL(keys == nullptr || values == nullptr, kMessage);
    index.keys = keys;
    index.values = values;
    room = size;
  }
  index.capacity = capacity;
  if (capacity > 10LL * index.step) index.step = capacity / 2;
}

/// Puts a key and its value at \a position; the entries from there on move up by one.  There must
/// be a free slot.
template <typename Index, typename Key>
void InsertAt(Index& index, int position, Key key, void* value) {
  const std::size_t after = static_cast<std::size_t>(index.count - position);
  memmove(index.keys + position + 1, index.keys + position, after * sizeof(Key));
  memmove(index.values + position + 1, index.values + position, after * sizeof(void*));
  index.keys[position] = key;
  index.values[position] = value;
  ++index.count;
}

/// Removes the entry at \a position.  The caller must have freed the key copy.
template <typename Index>
void RemoveAt(Index& index, int position) {
  const std::size_t after = static_cast<std::size_t>(index.count - position - 1);
  memmove(index.keys + position, index.keys + position + 1, after * sizeof(*index.keys));
  memmove(index.values + position, index.values + position + 1, after * sizeof(void*));
  --index.count;
}

}  // namespace vor

#endif  // VOR_CONTAINERS_SORTEDARRAY_H
