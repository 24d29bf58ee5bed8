#ifndef VOR_CONTAINERS_TAINDEXB_H
#define VOR_CONTAINERS_TAINDEXB_H

#include "../base/Export.h"

/// A set of distinct binary keys of one fixed size, each with one untyped pointer, kept sorted.
///
/// A key is a sequence of signed 32-bit words.  Callers rely on the descending order: the key whose
/// first differing word is greater comes first.  Positions are 0-based, 0 to count - 1; every
/// insertion and removal changes the positions after it.
///
/// Ownership: keeps copies of the keys, never owns the values.  A key copy lives until it is
///            removed; the key passed to a call may be one of the index's own, and need not be
///            aligned.
/// Errors:    a null key is in no index and is not added.  The process ends with FATAL for a key
///            size below 1 and if the arrays cannot grow.
/// Threads:   distinct indexes are independent; one index must not be changed by one thread while
///            another uses it.
class VOR_API TAIndexB {
 public:
  /// Keys have \a keyWords 32-bit words.
  explicit TAIndexB(int keyWords);

  TAIndexB(const TAIndexB&) = delete;
  TAIndexB& operator=(const TAIndexB&) = delete;
  ~TAIndexB();

  /// Adds a copy of \a key with \a value.  Returns the stored key: the new one or, with the value
  /// unchanged, the one that was already present.  Returns null, with nothing changed, for a null
  /// key and if there is no memory for the copy.
  const void* Append(const void* key, void* value);

  /// The position of \a key; -1 if it is absent.
  int IsIn(const void* key) const;

  /// The same: the size of a key is fixed, so the second argument has no effect.
  int IsIn(const void* key, int) const;

  /// The value of \a key; null if it is absent.
  void* operator[](const void* key) const;

  /// Removes one entry and frees its key copy; later ones move down by one.  Returns 0, or 1 if
  /// there is no such position.
  int RemovePosition(int position);

  /// Removes all entries and keeps the arrays and the capacity.  Returns 0.
  int Reset();

  /// Grows the arrays if one more key would fill the last free slot.  Append calls it before it
  /// adds a key.  Returns 0.
  int increaseAllocSize();

  /// Orders two keys, neither null.  -1 if \a key comes first, because its first differing word is
  /// the greater one; +1 if \a stored comes first; 0 if they are equal.
  int compare(const void* key, void* stored) const;

  // For callers to read; only the index itself changes them.
  void** keys;    // in order
  void** values;  // values[i] belongs to keys[i]
  int sizeofkey;  // 32-bit words of a key
  int count;      // entries
  int capacity;   // slots in use or free
  int step;       // slots by which the capacity grows next

 private:
  int _room;  // slots that the arrays really have, at least capacity
};

#endif  // VOR_CONTAINERS_TAINDEXB_H
