#ifndef VOR_CONTAINERS_SORTEDARRAY_H
#define VOR_CONTAINERS_SORTEDARRAY_H

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cstddef>
#include <limits>

#include "foundation/Tracing.h"

namespace vor {

// What the sorted indexes have in common.  An index has the public fields keys, values, count,
// capacity and step: keys[0] to keys[count - 1] are strictly ordered, and values[i] belongs to
// keys[i].  Positions are 0-based.

/// Where a key is in a sorted array or, if it is absent, where it would have to go.
struct SortedPlace {
  int position;
  bool isPresent;
};

/// Bisects \a count sorted keys.  \a compare gives the sign of the key that is searched against
/// one stored key.
template <typename Key, typename Compare>
SortedPlace FindPlace(const Key* keys, int count, const Compare& compare) {
  int low = 0;
  int high = count;
  while (low < high) {
    const int middle = low + (high - low) / 2;
    const int sign = compare(keys[middle]);
    if (sign == 0) return {middle, true};
    if (sign > 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return {low, false};
}

/// The same for a key that is to be added.  The last key is asked first, so that keys that arrive
/// in order cost one comparison each.
template <typename Key, typename Compare>
SortedPlace FindPlaceToAdd(const Key* keys, int count, const Compare& compare) {
  if (count == 0) return {0, false};
  const int sign = compare(keys[count - 1]);
  if (sign >= 0) return {sign == 0 ? count - 1 : count, sign == 0};
  return FindPlace(keys, count - 1, compare);
}

/// The position at which \a place says the key is; -1 if it is absent.
inline int PositionOrMinusOne(SortedPlace place) {
  return place.isPresent ? place.position : -1;
}

/// \a array with room for \a size elements, the first \a used of them kept.  An array that lies in
/// the index itself is copied, any other reallocated.  Null if there is no memory.
template <typename T>
T* GrowArray(T* array, const T* inlineArray, std::size_t used, std::size_t size) {
  if (array == nullptr || array != inlineArray) {
    return static_cast<T*>(realloc(array, size * sizeof(T)));
  }
  T* grown = static_cast<T*>(malloc(size * sizeof(T)));
  if (grown != nullptr) memcpy(grown, array, used * sizeof(T));
  return grown;
}

/// Makes sure that one more key leaves a slot free: otherwise the capacity grows by one step, and
/// the step becomes half of the capacity once that has passed ten steps.  \a room is what the
/// arrays really hold; they are left alone where it suffices.  The inline arrays are null for an
/// index that has none.  Ends the process if there is no memory.
template <typename Index, typename Key>
void GrowForOneMore(Index& index, int& room, const Key* inlineKeys, void* const* inlineValues) {
  if (index.count < index.capacity - 1) return;
  const int capacity = static_cast<int>(std::min<long long>(
      static_cast<long long>(index.capacity) + index.step, std::numeric_limits<int>::max()));
  if (capacity > room) {
    const std::size_t used = static_cast<std::size_t>(index.count);
    const std::size_t size = static_cast<std::size_t>(capacity);
    Key* keys = GrowArray(index.keys, inlineKeys, used, size);
    void** values = GrowArray(index.values, inlineValues, used, size);
    // One text for all indexes; log filters match it.
    FATAL(keys == nullptr || values == nullptr,
          "TAIndex::increaseAllocSize failed, memory allocation failed");
    index.keys = keys;
    index.values = values;
    room = capacity;
  }
  index.capacity = capacity;
  if (capacity > 10LL * index.step) index.step = capacity / 2;
}

/// Puts a key and its value at \a position; the entries from there on move up by one.  There must
/// be a free slot.
template <typename Index, typename Key>
void InsertAt(Index& index, int position, Key key, void* value) {
  const std::size_t behind = static_cast<std::size_t>(index.count - position);
  memmove(index.keys + position + 1, index.keys + position, behind * sizeof(Key));
  memmove(index.values + position + 1, index.values + position, behind * sizeof(void*));
  index.keys[position] = key;
  index.values[position] = value;
  ++index.count;
}

/// Closes the gap of the entry at \a position; whatever its key owns has been released.
template <typename Index>
void RemoveAt(Index& index, int position) {
  const std::size_t behind = static_cast<std::size_t>(index.count - position - 1);
  memmove(index.keys + position, index.keys + position + 1, behind * sizeof(*index.keys));
  memmove(index.values + position, index.values + position + 1, behind * sizeof(void*));
  --index.count;
}

}  // namespace vor

#endif  // VOR_CONTAINERS_SORTEDARRAY_H
