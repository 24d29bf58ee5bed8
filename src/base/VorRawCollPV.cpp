#include "base/VorRawCollPV.h"

#include "base/MergeSort.h"

VorRawCollPV::VorRawCollPV(int initialCapacity) noexcept {
  if (initialCapacity > 0) _slots.reserve(static_cast<std::size_t>(initialCapacity));
}

void VorRawCollPV::RemoveAll(VorCollec::MemoryHandling handling) {
  _slots.clear();
  if (handling == VorCollec::ReleaseMemory) _slots.shrink_to_fit();
}

void VorRawCollPV::RemovePosition(int position) {
  const std::size_t offset = VorCollec::OffsetOf(position, _slots.size());
  _slots.erase(_slots.begin() + static_cast<std::ptrdiff_t>(offset));
}

int VorRawCollPV::Size() const {
  return static_cast<int>(_slots.size());
}

void*& VorRawCollPV::operator[](int position) {
  return _slots[VorCollec::OffsetOf(position, _slots.size())];
}

void* const& VorRawCollPV::operator[](int position) const {
  return _slots[VorCollec::OffsetOf(position, _slots.size())];
}

void VorRawCollPV::QuickSort(Comparison compare) noexcept {
  vor::MergeSort(_slots, compare);
}

void VorRawCollPV::QuickSort(ContextComparison compare, void* context) noexcept {
  vor::MergeSort(_slots, [compare, context](const void* left, const void* right) {
    return compare(left, right, context);
  });
}
