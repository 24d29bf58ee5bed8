#ifndef VOR_CONTAINERS_TAINDEXI_H
#define VOR_CONTAINERS_TAINDEXI_H

#include "../base/Export.h"

/// A set of distinct ints, each with one untyped pointer, kept sorted in ascending order.
///
/// Positions are 0-based, 0 to count - 1; every insertion and removal changes the positions after
/// it.  Ints that arrive in order are appended in constant time; others move the entries after
/// them.
///
/// Ownership: never owns the values.
/// Errors:    the process ends with FATAL if the arrays cannot grow.
/// Threads:   distinct indexes are independent; one index must not be changed by one thread while
///            another uses it.
class VOR_API TAIndexI {
 public:
  TAIndexI();
  TAIndexI(const TAIndexI&) = delete;
  TAIndexI& operator=(const TAIndexI&) = delete;
  ~TAIndexI();

  /// Adds \a key with \a value; a key that is already present keeps its value.  Returns \a key.
  int Append(int key, void* value);

  /// The position of \a key; -1 if it is absent.
  int IsIn(int key) const;

  /// The value of \a key; null if it is absent.
  void* operator[](int key) const;

  /// Removes one entry; later ones move down by one.  Returns 0, or 1 if there is no such position.
  int RemovePosition(int position);

  /// Removes all entries and keeps the arrays and the capacity.  Returns 0.
  int Reset();

  /// Grows the arrays if one more key would fill the last free slot.  Append calls it before it
  /// adds a key.  Returns 0.
  int increaseAllocSize();

  // For callers to read; only the index itself changes them.
  int* keys;      // in order
  void** values;  // values[i] belongs to keys[i]
  int count;      // entries
  int capacity;   // slots in use or free
  int step;       // slots by which the capacity grows next

 private:
  int _room;  // slots that the arrays really have, at least capacity
};

#endif  // VOR_CONTAINERS_TAINDEXI_H
