#ifndef VOR_BASE_VORLISTVAL_H
#define VOR_BASE_VORLISTVAL_H

#include <new>
#include <utility>

#include "base/VorCollec.h"
#include "base/VorRawCollPV.h"

/// A list of values of X, each a heap copy made with X's copy constructor.
///
/// Positions are 1-based.  A pointer or reference to an element stays valid until that element is
/// removed, however the list grows or is sorted.
///
/// Ownership: owns its copies; destroys them from the last to the first.
/// Errors:    a position outside the list ends the process (see VorRawCollPV).  An element that
///            cannot be allocated is stored as a null pointer; it must not be read, only
///            removed or copied with its list.  An exception of X's copy constructor ends the
///            process.
/// Threads:   distinct lists are independent; one list must not be changed by one thread while
///            another uses it.
template <typename X>
class VOR_API VorListVal : public VorCollecRoot {
 public:
  explicit VorListVal(int initialCapacity = 0) : _slots(initialCapacity) {}
  /// The second argument is accepted for callers of the older form and has no effect.
  VorListVal(int initialCapacity, int) : _slots(initialCapacity) {}
  VorListVal(const VorListVal& other) : VorCollecRoot(other), _slots(other.Size()) {
    AppendCopies(other, _slots);
  }
  VorListVal& operator=(const VorListVal& other) {
    if (this != &other) {
      // Copied first: the other list may live inside one of the elements that go.
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

  /// Destroys every element; \a handling says what becomes of the array.
  void RemoveAll(VorCollec::MemoryHandling handling) {
    DestroyElements();
    _slots.RemoveAll(handling);
  }

  /// Destroys one element; later ones move down by one.
  void RemovePosition(int position) {
    delete static_cast<X*>(_slots[position]);
    _slots.RemovePosition(position);
  }

  /// Sorts with a comparison that gives a negative, zero or positive int.
  void QuickSort(int (*compare)(X* left, X* right)) {
    _slots.QuickSort(
        [](const void* left, const void* right, void* context) {
          return (*static_cast<int (**)(X*, X*)>(context))(
              static_cast<X*>(const_cast<void*>(left)), static_cast<X*>(const_cast<void*>(right)));
        },
        static_cast<void*>(&compare));
  }

  /// Equal when the sizes are and no pair of elements at one position differs by X's !=.
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
