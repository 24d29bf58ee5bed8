#ifndef VOR_CONTAINERS_POSITIONHINTS_H
#define VOR_CONTAINERS_POSITIONHINTS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "containers/TextWords.h"

namespace vor {

/// Finds most texts in a sorted array without a bisection.
///
/// A hash table with open addressing.  For each text of the array it holds a 32-bit tag and a hint,
/// the position at which the text was last found.  Insertions and removals in the array make hints
/// stale, so a hint must be checked by a comparison with the text at that position.  Tags are never
/// stale: a text whose tag is not in the table is not in the array.
///
/// Errors:  Add fails if there is no memory, and if too many tags crowd in one place, which happens
///          only with texts that were chosen for it.  The table must then be discarded.
/// Threads: Find and Correct may be called by several threads at once while no thread calls another
///          operation.
class PositionHints {
 public:
  static constexpr int kAbsent = -1;   // no text has this tag
  static constexpr int kUnknown = -2;  // the hints are stale, or it is the tag of another text

  /// The tag of a text.
  static std::uint32_t TagOf(const TextWords& text) {
    TextWord hash = 0;
    for (std::size_t i = 0; i <= text.Last(); ++i) hash = Mix(hash ^ text[i]);
    return static_cast<std::uint32_t>(Mix(hash) >> 32);
  }

  /// Adds the tag of a text that is inserted at \a position.  Returns false if that fails.
  bool Add(std::uint32_t tag, int position);

  /// Removes the tag, which is in the table, of a text that is removed.
  void Remove(std::uint32_t tag);

  /// The hint of \a tag that \a isRight accepts, kAbsent or kUnknown.  At least one tag must have
  /// been added before.
  template <typename IsRight>
  int Find(std::uint32_t tag, const IsRight& isRight) const {
    int answer = kAbsent;
    std::size_t slot = Home(tag);
    for (int run = 0; run < kLongestRun && !IsFree(_slots[slot]); ++run, slot = Next(slot)) {
      if (_slots[slot].tag != tag) continue;
      const int hint = Hint(_slots[slot]).load(std::memory_order_relaxed);
      if (isRight(hint)) return hint;
      answer = kUnknown;
    }
    return answer;
  }

  /// Makes \a position the hint of \a tag, which is in the table.
  void Correct(std::uint32_t tag, int position) const;

 private:
  struct Slot {
    std::uint32_t tag = 0;
    int hint = kAbsent;  // a position; kAbsent in a free slot
  };

  // A tag lies less than this after its home.  Random tags in a table that is at most half full do
  // not come near it.
  static constexpr int kLongestRun = 256;

  // The first bytes of a word are its high bits.  Multiplication only carries upwards, so fold the
  // high half down first.
  static TextWord Mix(TextWord word) { return (word ^ word >> 32) * 0x9e3779b97f4a7c15u; }

  // Const look-ups of several threads may correct the same hint.
  static std::atomic_ref<int> Hint(Slot& slot) { return std::atomic_ref<int>(slot.hint); }
  static bool IsFree(Slot& slot) { return Hint(slot).load(std::memory_order_relaxed) == kAbsent; }

  std::size_t Home(std::uint32_t tag) const { return tag & (_size - 1); }
  std::size_t Next(std::size_t slot) const { return (slot + 1) & (_size - 1); }
  std::size_t SlotOf(std::uint32_t tag) const;
  bool Place(std::uint32_t tag, int position);
  bool Grow();

  std::unique_ptr<Slot[]> _slots;  // null before the first Add
  std::size_t _size = 0;           // a power of two
  std::size_t _used = 0;           // at most half of _size
};

}  // namespace vor

#endif  // VOR_CONTAINERS_POSITIONHINTS_H
