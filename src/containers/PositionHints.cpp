#include "containers/PositionHints.h"

#include <new>
#include <utility>

namespace vor {

namespace {

constexpr std::size_t kFirstSize = 64;
}  // namespace

bool PositionHints::Add(std::uint32_t tag, int position) {
  if (2 * (_used + 1) > _size && !Grow()) return false;
  return Place(tag, position);
}

void PositionHints::Remove(std::uint32_t tag) {
  std::size_t gap = SlotOf(tag);
  // Later slots of the run move into the gap unless that would put them before their home.
  for (std::size_t i = Next(gap); !IsFree(_slots[i]); i = Next(i)) {
    const std::size_t fromHome = (i - Home(_slots[i].tag)) & (_size - 1);
    const std::size_t fromGap = (i - gap) & (_size - 1);
    if (fromHome < fromGap) continue;
    _slots[gap] = _slots[i];
    gap = i;
  }
  _slots[gap] = Slot();
  --_used;
}

void PositionHints::Correct(std::uint32_t tag, int position) const {
  Hint(_slots[SlotOf(tag)]).store(position, std::memory_order_relaxed);
}

std::size_t PositionHints::SlotOf(std::uint32_t tag) const {
  std::size_t slot = Home(tag);
  while (_slots[slot].tag != tag || IsFree(_slots[slot])) slot = Next(slot);
  return slot;
}

bool PositionHints::Place(std::uint32_t tag, int position) {
  std::size_t slot = Home(tag);
  for (int run = 0; run < kLongestRun; ++run, slot = Next(slot)) {
    if (!IsFree(_slots[slot])) continue;
    _slots[slot] = {tag, position};
    ++_used;
    return true;
  }
  return false;
}

bool PositionHints::Grow() {
  const std::size_t oldSize = std::exchange(_size, _size == 0 ? kFirstSize : 2 * _size);
  const std::unique_ptr<Slot[]> old = std::move(_slots);
  _slots.reset(new (std::nothrow) Slot[_size]);
  if (_slots == nullptr) return false;
  _used = 0;
  for (std::size_t i = 0; i < oldSize; ++i) {
    if (!IsFree(old[i]) && !Place(old[i].tag, old[i].hint)) return false;
  }
  return true;
}

}  // namespace vor
