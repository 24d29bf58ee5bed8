#ifndef VOR_BASE_VORLISTPTR_H
#define VOR_BASE_VORLISTPTR_H

#include <cstddef>
#include <vector>

#include "VorCollec.h"
#include "VorRawCollPV.h"

/// A list of pointers to X; the typed form of VorRawCollPV.
///
/// Positions are 1-based.  X may be an incomplete type.
///
/// Ownership: copies and destroys pointers, never what they point at.
/// Errors and threads: as VorRawCollPV.
template <typename X>
class VOR_API VorListPtr : public VorCollecRoot {
 public:
  /// Allocates room for \a initialCapacity pointers; 0 or less allocates none.
  constexpr explicit VorListPtr(int initialCapacity = 0) noexcept {
    if (initialCapacity > 0) _pointers.reserve(static_cast<std::size_t>(initialCapacity));
  }
  VorListPtr(const VorListPtr& other) noexcept = default;
  VorListPtr(VorListPtr&& other) noexcept = default;
  VorListPtr& operator=(const VorListPtr& other) noexcept = default;
  VorListPtr& operator=(VorListPtr&& other) noexcept = default;

  void Append(X* pointer) noexcept { _pointers.push_back(pointer); }

  /// Empties the list; \a handling selects whether its storage is freed.
  void RemoveAll(VorCollec::MemoryHandling handling) {
    _pointers.clear();
    if (handling == VorCollec::ReleaseMemory) _pointers.shrink_to_fit();
  }

  /// Removes one pointer; later ones move down by one.
  void RemovePosition(int position) {
    _pointers.erase(_pointers.begin() + static_cast<std::ptrdiff_t>(Offset(position)));
  }

  int Size() const { return static_cast<int>(_pointers.size()); }

  /// The pointer at \a position.  The reference is valid until the list changes.
  X*& operator[](int position) { return _pointers[Offset(position)]; }
  X* const& operator[](int position) const { return _pointers[Offset(position)]; }

  /// Sorts with a comparison of two elements; see VorRawCollPV.
  void QuickSort(VorRawCollPV::Comparison compare) noexcept {
    VorRawCollPV sorted(Size());
    for (X* const pointer : _pointers) sorted.Append(pointer);
    sorted.QuickSort(compare);
    for (int i = 1; i <= Size(); ++i) (*this)[i] = static_cast<X*>(sorted[i]);
  }

 private:
  std::size_t Offset(int position) const { return VorCollec::OffsetOf(position, _pointers.size()); }

  // Not a VorRawCollPV: an X*& must not refer to an object of type void*.
  std::vector<X*> _pointers;
};

#endif  // VOR_BASE_VORLISTPTR_H
