#include "perfo/TAPerfoAv.h"

#include <algorithm>

#include "base/ScopedLock.h"
#include "perfo/PerfoFormat.h"

TAPerfoAv::TAPerfoAv() = default;

TAPerfoAv::TAPerfoAv(const VorString& name) : TAPerfo(name) {}

TAPerfoAv::TAPerfoAv(const VorString& name, int length)
    : TAPerfo(name), _length(std::max(length, 1)) {}

TAPerfoAv::~TAPerfoAv() = default;

void TAPerfoAv::SetLength(int length) {
  {
    const vor::ScopedLock holder(_lock);
    _length = std::max(length, 1);
  }
  Reset();
}

void TAPerfoAv::Reset() {
  const vor::ScopedLock holder(_lock);
  _start = time(nullptr);
}

void TAPerfoAv::Count(int n) {
  const vor::ScopedLock holder(_lock);
  Add(n);
}

void TAPerfoAv::Report(VorString& line) {
  const vor::ScopedLock holder(_lock);
  const time_t now = time(nullptr);
  const long long weighted = static_cast<long long>(Total()) * _length;
  const time_t elapsed = now - _start;
  const int rate = elapsed > 0 ? static_cast<int>(weighted / elapsed) : 0;
  line = _name + " " + countToStr(rate) + " per " + lengthToStr(_length) + ", " + TotalInTime(now);
}
