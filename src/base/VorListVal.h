#ifndef VOR_BASE_VORLISTVAL_H
#define VOR_BASE_VORLISTVAL_H

#include <new>
#include <utility>

#include "VorCollec.h"
#include "VorRawCollPV.h"

/// A list of values of X, each a heap copy made with X's copy constructor.
///
/// Positions are 1-based.  A pointer or reference to an element stays valid until that element is
/// removed, even if the list grows or is sorted.
///
/// Ownership: owns its copies; destroys them from the last to the first.
/// Errors:    a position outside the list ends the process (see VorRawCollPV).  An element that
///            cannot be allocated is stored as a null pointer; it may be removed, or copied with
///            its list, but must not be read.  If X's copy constructor throws, or if there is no
///            memory for the list itself, the process ends.
/// Threads:   distinct lists are independent; one list must not be changed by one thread while
///            another uses it.
template <typename X>
class VOR_API VorListVal : public VorCollecRoot {
 public:
  explicit VorListVal(int initialCapacity = 0) noexcept : _slots(initialCapacity) {}
  /// The second argument has no effect; it is accepted for older callers.
  VorListVal(int initialCapacity, int) noexcept : _slots(initialCapacity) {}
  VorListVal(const VorListVal& other) noexcept : VorCollecRoot(other), _slots(other.Size()) {
    AppendCopies(other, _slots);
  }
  VorListVal& operator=(const VorListVal& other) noexcept {
    if (this != &other) {
      // Copy first: the other list may be inside an element of this one.
      VorRawCollPV copies(other.Size());
      AppendCopies(other, copies);
      RemoveAll(VorCollec::ReleaseMemory);
      std::swap(_slots, copies);
    }
    return *this;
  }
  ~VorListVal() override { DestroyElements(); }

  void Append(const X& value) noexcept { _slots.Append(new (std::nothrow) X(value)); }

  int Size() const { return _slots.Size(); }

  X& operator[](int position) { return *static_cast<X*>(_slots[position]); }
  const X& operator[](int position) const { return *static_cast<const X*>(_slots[position]); }

  /// Destroys every element; \a handling selects whether the storage of the list is freed.
  void RemoveAll(VorCollec::MemoryHandling handling) {
    DestroyElements();
    _slots.RemoveAll(handling);
  }

  /// Destroys one element; later ones move down by one.
  void RemovePosition(int position) {
    delete static_cast<X*>(_slots[position]);
    _slots.RemovePosition(position);
  }

  /// Sorts with a comparison that returns a negative, zero or positive int; see VorRawCollPV.
  void QuickSort(int (*compare)(X* left, X* right)) {
    _slots.QuickSort(
        [](const void* left, const void* right, void* context) {
          return (*static_cast<int (**)(X*, X*)>(context))(
              static_cast<X*>(const_cast<void*>(left)), static_cast<X*>(const_cast<void*>(right)));
        },
        static_cast<void*>(&compare));
  }

  /// True if the sizes differ, or if X's != is true for the elements at some position.
  bool operator!=(const VorListVal& other) const {
    if (this == &other) return false;
    if (Size() != other.Size()) return true;
    for (int i = 1; i <= Size(); ++i) {
      if ((*this)[i] != other[i]) return true;
    }
    return false;
  }
  bool operator==(const VorListVal& other) const { return !(*this != other); }

 private:
  static void AppendCopies(const VorListVal& from, VorRawCollPV& to) noexcept {
    for (int i = 1; i <= from.Size(); ++i) {
      const X* element = static_cast<const X*>(from._slots[i]);
      to.Append(element == nullptr ? nullptr : new (std::nothrow) X(*element));
    }
  }
  void DestroyElements() {
    static_assert(sizeof(X) > 0, "include the header of the element type");
    for (int i = Size(); i >= 1; --i) delete static_cast<X*>(_slots[i]);
  }

  VorRawCollPV _slots;
};

#endif  // VOR_BASE_VORLISTVAL_H
