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
/// one stored key, and is told by Prefetch which ones may be next.
///
/// The loop never leaves early, so that the choice in it needs no branch: on random keys a wrongly
/// predicted branch costs more than the comparisons that it saves.
template <typename Key, typename Compare>
SortedPlace FindPlace(const Key* keys, int count, Compare compare) {
  if (count == 0) return {0, false};
  const Key* first = keys;  // of the keys left, at the end the last one not behind the searched one
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

/// The same for a key that is to be added.  The last key is asked first, so that keys that arrive
/// in order cost one comparison each.
template <typename Key, typename Compare>
SortedPlace FindPlaceToAdd(const Key* keys, int count, Compare compare) {
  if (count == 0) return {0, false};
  const int sign = compare(keys[count - 1]);
  if (sign >= 0) return {sign == 0 ? count - 1 : count, sign == 0};
  return FindPlace(keys, count - 1, compare);
}

/// The position at which \a place says the key is; -1 if it is absent.
inline int PositionOrMinusOne(SortedPlace place) {
  return place.isPresent ? place.position : -1;
}

/// Gives an index without inline arrays its first ones.  Returns their size; if there is no memory
/// 0, with which the first growth check tries again.
template <typename Key>
int AllocateArrays(Key*& keys, void**& values, int size) {
  keys = static_cast<Key*>(malloc(static_cast<std::size_t>(size) * sizeof(Key)));
  values = static_cast<void**>(malloc(static_cast<std::size_t>(size) * sizeof(void*)));
  return keys == nullptr || values == nullptr ? 0 : size;
}

/// \a array with room for \a size elements, the first \a used of them kept.  An inline one is
/// copied, any other reallocated.  Null if there is no memory.
template <typename T>
T* GrowArray(T* array, bool isInline, int used, int size) {
  const std::size_t bytes = static_cast<std::size_t>(size) * sizeof(T);
  if (!isInline) return static_cast<T*>(realloc(array, bytes));
  T* grown = static_cast<T*>(malloc(bytes));
  if (grown != nullptr) memcpy(grown, array, static_cast<std::size_t>(used) * sizeof(T));
  return grown;
}

/// Makes sure that one more key leaves a slot free: otherwise the capacity grows by one step, and
/// the step becomes half of the capacity once that has passed ten steps.  Ends the process if there
/// is no memory or an int cannot count the slots.
///
/// \a room is what the arrays really hold.  It doubles at least, so that the small steps of the
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
