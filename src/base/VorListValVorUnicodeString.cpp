#include "base/VorListValVorUnicodeString.h"

#include "base/IndexCheck.h"

void VorListValVorUnicodeString::RemoveAll(VorCollec::MemoryHandling handling) {
  _values.clear();
  if (handling == VorCollec::ReleaseMemory) _values.shrink_to_fit();
}

int VorListValVorUnicodeString::Size() const {
  return static_cast<int>(_values.size());
}

VorUnicodeString& VorListValVorUnicodeString::operator[](int position) {
  return _values[vor::CheckedOffset(position, _values.size())];
}

const VorUnicodeString& VorListValVorUnicodeString::operator[](int position) const {
  return _values[vor::CheckedOffset(position, _values.size())];
}
