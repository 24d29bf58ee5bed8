#ifndef VOR_PERFO_TAPERFOLOAD_H
#define VOR_PERFO_TAPERFOLOAD_H

#include "../base/Export.h"
#include "TAPerfo.h"

/// A counter that also reports how much was counted in a recent window of time, as in "bytes 12k in
/// last 1m, 3.5M in 2h".
///
/// The window is divided into 20 slots; one more slot is being filled.  The report excludes that
/// one, so a recent count appears in it one slot later.
class VOR_API TAPerfoLoad : public TAPerfo {
 public:
  /// A window of 60 seconds.
  TAPerfoLoad();
  explicit TAPerfoLoad(const VorString& name);
  /// A window of \a length seconds; a length below 1 counts as 1.
  TAPerfoLoad(const VorString& name, int length);

  /// Sets the window and resets the counter.
  void SetLength(int length);

  void Reset() override;
  void Count(int n) override;
  void Report(VorString& line) override;
  using TAPerfo::Report;

  ~TAPerfoLoad() override;

 private:
  static constexpr int kSlots = 20;  // in the window

  void AdvanceTo(time_t now);

  unsigned _slots[kSlots + 1] = {};
  int _current = 0;          // the slot that is being filled
  long long _slotStart = 0;  // its start, in twentieths of a second since the epoch
  int _length = 60;          // of the window in seconds, and of a slot in twentieths of one
};

#endif  // VOR_PERFO_TAPERFOLOAD_H
