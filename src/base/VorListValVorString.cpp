#include "base/VorListValVorString.h"

#include <algorithm>
#include <iterator>

#include "base/MergeSort.h"

void VorListValVorString::Append(const VorListValVorString& other) noexcept {
  const std::size_t count = other._values.size();
  // By position and a fixed count: other may be this list, which grows meanwhile.
  for (std::size_t i = 0; i < count; ++i) _values.push_back(other._values[i]);
}

void VorListValVorString::InsertAfter(int position, const VorString& value) noexcept {
  Insert(static_cast<long long>(position) + 1, value);
}

void VorListValVorString::InsertBefore(int position, const VorString& value) noexcept {
  Insert(position, value);
}

void VorListValVorString::Insert(long long position, const VorString& value) noexcept {
  const std::size_t offset = VorCollec::OffsetOf(position, _values.size() + 1);
  _values.insert(_values.begin() + static_cast<std::ptrdiff_t>(offset), value);
}

int VorListValVorString::Locate(const VorString& value, int start) const {
  const std::size_t first = start < 1 ? 0 : static_cast<std::size_t>(start) - 1;
  for (std::size_t i = first; i < _values.size(); ++i) {
    if (_values[i] == value) return static_cast<int>(i + 1);
  }
  return 0;
}

void VorListValVorString::QuickSort(int (*compare)(VorString* left, VorString* right)) noexcept {
  std::vector<VorString*> order;
  order.reserve(_values.size());
  for (VorString& value : _values) order.push_back(&value);
  vor::MergeSort(order, compare);

  std::vector<VorString> sorted;
  sorted.reserve(order.size());
  for (VorString* value : order) sorted.push_back(std::move(*value));
  _values.swap(sorted);
}

void VorListValVorString::RemoveAll(VorCollec::MemoryHandling handling) noexcept {
  _values.clear();
  if (handling == VorCollec::ReleaseMemory) _values.shrink_to_fit();
}

void VorListValVorString::RemovePosition(int position) {
  const std::size_t offset = VorCollec::OffsetOf(position, _values.size());
  _values.erase(_values.begin() + static_cast<std::ptrdiff_t>(offset));
}

int VorListValVorString::Size() const {
  return static_cast<int>(_values.size());
}

VorString& VorListValVorString::operator[](int position) {
  return _values[VorCollec::OffsetOf(position, _values.size())];
}

const VorString& VorListValVorString::operator[](int position) const {
  return _values[VorCollec::OffsetOf(position, _values.size())];
}
