#ifndef VOR_CONTAINERS_TAINDEX_H
#define VOR_CONTAINERS_TAINDEX_H

#include <memory>

#include "../base/Export.h"

namespace vor {
class PositionHints;
class TextWords;
}  // namespace vor

/// A set of distinct texts, each with one untyped pointer, kept sorted in ascending strcmp order.
///
/// Append adds, IsIn and operator[] find.  Positions are 0-based, 0 to count - 1, and follow the
/// order; every insertion and removal changes the positions after it.  To walk an index, read
/// keys[i] and values[i] for each position.
///
/// Up to nine entries live inside the object and are found by bisection.  A larger index also keeps
/// a hash table of hints, 16 to 32 bytes for each key: the position at which the key was last
/// found.  A look-up with a wrong hint falls back to bisection.  Texts that arrive in order are
/// appended in constant time; others move the entries after them.
///
/// Ownership: keeps copies of the keys, never owns the values.  A key copy lives until it is
///            removed; the key passed to a call may be one of the index's own.
/// Errors:    a null key is in no index and is not added.  The process ends with FATAL if the
///            arrays cannot grow.
/// Threads:   distinct indexes are independent; one index must not be changed by one thread while
///            another uses it.  Const operations may run in several threads at once.
class VOR_API TAIndex {
 public:
  TAIndex();

  /// The arrays grow by \a growthStep entries at first; by 10 if it is less than 10.
  explicit TAIndex(int growthStep);

  TAIndex(const TAIndex&) = delete;
  TAIndex& operator=(const TAIndex&) = delete;
  ~TAIndex();

  /// Adds a copy of \a key with \a value.  Returns the stored key: the new one or, with the value
  /// unchanged, the one that was already present.  Returns null, with nothing changed, for a null
  /// key and if there is no memory for the copy.
  const char* Append(const char* key, void* value);

  /// The position of \a key; -1 if it is absent.
  int IsIn(const char* key) const;

  /// The position of the stored key that consists of the first \a length bytes of \a key; -1 if
  /// there is none, if \a key is shorter, or if \a length is negative.
  int IsIn(const char* key, int length) const;

  /// The value of \a key; null if it is absent.
  void* operator[](const char* key) const;

  /// Removes one entry and frees its key copy; later ones move down by one.  Returns 0, or 1 if
  /// there is no such position.
  int RemovePosition(int position);

  /// Removes all entries and keeps the arrays.  The capacity becomes one step unless it is smaller
  /// already.  Returns 0.
  int Reset();

  /// Grows the arrays if one more key would fill the last free slot.  Append calls it before it
  /// adds a key.  Returns 0.
  int increaseAllocSize();

 private:
  static constexpr int kInlineSlots = 10;

  int Find(const vor::TextWords& text) const;
  void AddHint(const vor::TextWords& key, int position);

  char* _inlineKeys[kInlineSlots];
  void* _inlineValues[kInlineSlots];

 public:
  // For callers to read; only the index itself changes them.
  char** keys;    // in order
  void** values;  // values[i] belongs to keys[i]
  int count;      // entries
  int capacity;   // slots in use or free, at least count + 1
  int step;       // slots by which the capacity grows next

 private:
  int _room;  // slots that the arrays really have, at least capacity
  std::unique_ptr<vor::PositionHints> _hints;  // null for few keys
};

#endif  // VOR_CONTAINERS_TAINDEX_H
