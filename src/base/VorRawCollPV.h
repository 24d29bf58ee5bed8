#ifndef VOR_BASE_VORRAWCOLLPV_H
#define VOR_BASE_VORRAWCOLLPV_H

#include <vector>

#include "base/Export.h"
#include "base/VorCollec.h"

/// A growable array of untyped pointers, the storage behind the typed lists.
///
/// Positions are 1-based: 1 to Size().  The array grows geometrically.
///
/// Ownership: never owns what the pointers point at.
/// Errors:    a position outside the array is a bug of the caller: a message on standard error,
///            then abort.  Running out of memory ends the process.
/// Threads:   distinct arrays are independent; one array must not be changed by one thread while
///            another uses it.
class VOR_API VorRawCollPV {
 public:
  /// Compares what two slots hold: negative, zero or positive.
  using Comparison = int (*)(const void* left, const void* right);
  /// The same with a context of the caller's.
  using ContextComparison = int (*)(const void* left, const void* right, void* context);

  /// Room for \a initialCapacity pointers is taken at once; 0 or less takes none.
  explicit VorRawCollPV(int initialCapacity = 0);

  void Append(void* pointer) noexcept { _slots.push_back(pointer); }

  /// Empties the array; \a handling says what becomes of its storage.
  void RemoveAll(VorCollec::MemoryHandling handling);

  /// Removes one slot; later ones move down by one.
  void RemovePosition(int position);

  int Size() const;

  void*& operator[](int position);
  void* const& operator[](int position) const;

  /// Sorts the slots.  Equal elements keep their order; sorted input costs one comparison an
  /// element; a comparison that contradicts itself gives some order, never an access out of bounds.
  void QuickSort(Comparison compare) noexcept;
  void QuickSort(ContextComparison compare, void* context) noexcept;

 private:
  std::vector<void*> _slots;
};

#endif  // VOR_BASE_VORRAWCOLLPV_H
