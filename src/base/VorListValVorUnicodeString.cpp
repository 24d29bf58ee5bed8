#include "base/VorListValVorUnicodeString.h"

void VorListValVorUnicodeString::RemoveAll(VorCollec::MemoryHandling handling) noexcept {
  _values.clear();
  if (handling == VorCollec::ReleaseMemory) _values.shrink_to_fit();
}

int VorListValVorUnicodeString::Size() const {
  return static_cast<int>(_values.size());
}

VorUnicodeString& VorListValVorUnicodeString::operator[](int position) {
  return _values[VorCollec::OffsetOf(position, _values.size())];
}

const VorUnicodeString& VorListValVorUnicodeString::operator[](int position) const {
  return _values[VorCollec::OffsetOf(position, _values.size())];
}
