#include "perfo/TAPerfoLoad.h"

#include <algorithm>

#include "base/ScopedLock.h"
#include "perfo/PerfoFormat.h"

TAPerfoLoad::TAPerfoLoad() {
  TAPerfoLoad::Reset();
}

TAPerfoLoad::TAPerfoLoad(const VorString& name) : TAPerfo(name) {
  TAPerfoLoad::Reset();
}

TAPerfoLoad::TAPerfoLoad(const VorString& name, int length)
    : TAPerfo(name), _length(std::max(length, 1)) {
  TAPerfoLoad::Reset();
}

TAPerfoLoad::~TAPerfoLoad() = default;

void TAPerfoLoad::SetLength(int length) {
  {
    const vor::ScopedLock holder(_lock);
    _length = std::max(length, 1);
  }
  Reset();
}

void TAPerfoLoad::Reset() {
  const vor::ScopedLock holder(_lock);
  ClearCount();
  _current = 0;
  const time_t now = time(nullptr);
  _start = now;
  _slotStart = static_cast<long long>(now) * kSlots;
  std::fill(std::begin(_slots), std::end(_slots), 0u);
}

void TAPerfoLoad::Count(int n) {
  const vor::ScopedLock holder(_lock);
  Add(n);
  AdvanceTo(time(nullptr));
  _slots[_current] += static_cast<unsigned>(n);
}

// Clears the slots that have begun since the last call and makes the last of them the current one.
void TAPerfoLoad::AdvanceTo(time_t now) {
  constexpr int kRing = kSlots + 1;
  const long long elapsed = static_cast<long long>(now) * kSlots - _slotStart;
  long long passed = elapsed > 0 ? elapsed / _length : 0;
  // After a long silence each call passes 21 to 41 slots until the ring has caught up with the
  // time.  Reports right after a silence are therefore too low; callers rely on it.
  if (passed > kRing) passed = passed % kRing + kRing;
  for (; passed > 0; --passed) {
    _current = (_current + 1) % kRing;
    _slots[_current] = 0;
    _slotStart += _length;
  }
}

void TAPerfoLoad::Report(VorString& line) {
  TAPerfoLoad::Count(0);  // before the lock is taken, which is not recursive
  const vor::ScopedLock holder(_lock);
  unsigned sum = 0;
  for (int i = 0; i <= kSlots; ++i) sum += i == _current ? 0 : _slots[i];
  line = _name + " " + countToStr(static_cast<int>(sum)) + " in last " + lengthToStr(_length) +
         ", " + TotalInTime(time(nullptr));
}
