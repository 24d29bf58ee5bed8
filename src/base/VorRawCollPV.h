#ifndef VOR_BASE_VORRAWCOLLPV_H
#define VOR_BASE_VORRAWCOLLPV_H

#include <vector>

#include "Export.h"
#include "VorCollec.h"

/// A growable array of untyped pointers, for the typed lists.
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
  /// Compares the pointers of two slots; returns a negative, zero or positive int.
  using Comparison = int (*)(const void* left, const void* right);
  /// The same, with a context that the caller passes to QuickSort.
  using ContextComparison = int (*)(const void* left, const void* right, void* context);

  /// Allocates room for \a initialCapacity pointers; 0 or less allocates none.
  explicit VorRawCollPV(int initialCapacity = 0) noexcept;
  VorRawCollPV(const VorRawCollPV& other) noexcept = default;
  VorRawCollPV(VorRawCollPV&& other) noexcept = default;
  VorRawCollPV& operator=(const VorRawCollPV& other) noexcept = default;
  VorRawCollPV& operator=(VorRawCollPV&& other) noexcept = default;
  ~VorRawCollPV() = default;

  void Append(void* pointer) noexcept { _slots.push_back(pointer); }

  /// Empties the array; \a handling selects whether its storage is freed.
  void RemoveAll(VorCollec::MemoryHandling handling);

  /// Removes one slot; later ones move down by one.
  void RemovePosition(int position);

  int Size() const;

  /// The pointer at \a position.  The reference is valid until the array changes.
  void*& operator[](int position);
  void* const& operator[](int position) const;

  /// Sorts the slots.  Equal elements keep their order.  Sorted input costs one comparison per
  /// element.  A comparison that contradicts itself results in an arbitrary order, never in an
  /// access out of bounds.
  void QuickSort(Comparison compare) noexcept;
  void QuickSort(ContextComparison compare, void* context) noexcept;

 private:
  std::vector<void*> _slots;
};

#endif  // VOR_BASE_VORRAWCOLLPV_H
