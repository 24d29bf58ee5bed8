#ifndef VOR_BASE_VORLISTPTR_H
#define VOR_BASE_VORLISTPTR_H

#include "base/VorCollec.h"
#include "base/VorRawCollPV.h"

/// A list of pointers to X; the typed face of one VorRawCollPV.
///
/// Positions are 1-based.  X may be an incomplete type.
///
/// Ownership: copies and destroys pointers, never what they point at.
/// Errors and threads: as VorRawCollPV.
template <typename X>
class VOR_API VorListPtr : public VorCollecRoot {
 public:
  /// Stands for one element of the list, as an X*& would: read it into an X* and do not keep it,
  /// since it is valid only until the list changes.
  class Slot {
   public:
    operator X*() const { return static_cast<X*>(_slot); }
    X* operator->() const { return static_cast<X*>(_slot); }
    Slot& operator=(X* pointer) {
      _slot = pointer;
      return *this;
    }
    Slot& operator=(const Slot& other) { return *this = static_cast<X*>(other); }
    Slot(const Slot&) = default;

   private:
    friend class VorListPtr;
    explicit Slot(void*& slot) : _slot(slot) {}

    void*& _slot;
  };

  explicit VorListPtr(int initialCapacity = 0) : _slots(initialCapacity) {}

  void Append(X* pointer) { _slots.Append(pointer); }
  void RemoveAll(VorCollec::MemoryHandling handling) { _slots.RemoveAll(handling); }
  void RemovePosition(int position) { _slots.RemovePosition(position); }
  int Size() const { return _slots.Size(); }

  /// The pointer at \a position; in a list that may change, `list[position] = pointer` replaces it.
  X* operator[](int position) const { return static_cast<X*>(_slots[position]); }
  Slot operator[](int position) { return Slot(_slots[position]); }

  /// Sorts with a comparison of two elements; see VorRawCollPV.
  void QuickSort(VorRawCollPV::Comparison compare) { _slots.QuickSort(compare); }

 private:
  VorRawCollPV _slots;
};

#endif  // VOR_BASE_VORLISTPTR_H
