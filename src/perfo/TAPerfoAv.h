#ifndef VOR_PERFO_TAPERFOAV_H
#define VOR_PERFO_TAPERFOAV_H

#include "../base/Export.h"
#include "TAPerfo.h"

/// A counter that also reports its average rate since the start, as in "requests 12 per 1m, 1.5k in
/// 2h".
class VOR_API TAPerfoAv : public TAPerfo {
 public:
  /// A rate per 60 seconds.
  TAPerfoAv();
  explicit TAPerfoAv(const VorString& name);
  /// A rate per \a length seconds; a length below 1 counts as 1.
  TAPerfoAv(const VorString& name, int length);

  /// Sets the unit of the rate and resets the counter.
  void SetLength(int length);

  /// Sets the starting time to now and keeps the count.
  void Reset() override;
  void Count(int n) override;
  void Report(VorString& line) override;
  using TAPerfo::Report;

  ~TAPerfoAv() override;

 private:
  int _length = 60;  // the unit of the rate in seconds
};

#endif  // VOR_PERFO_TAPERFOAV_H
