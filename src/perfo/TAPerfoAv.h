#ifndef VOR_PERFO_TAPERFOAV_H
#define VOR_PERFO_TAPERFOAV_H

#include "base/Export.h"
#include "perfo/TAPerfo.h"

/// A counter that also tells its average rate since the start, as in "requests 12 per 1m, 1.5k in
/// 2h".
class VOR_API TAPerfoAv : public TAPerfo {
 public:
  /// A rate per 60 seconds.
  TAPerfoAv();
  explicit TAPerfoAv(const VorString& name);
  /// A rate per \a length seconds; less than 1 is 1.
  TAPerfoAv(const VorString& name, int length);

  /// Sets the unit of the rate and resets the counter.
  void SetLength(int length);

  /// Counts from now on.  The count stays: only its time begins anew.
  void Reset() override;
  void Count(int n) override;
  void Report(VorString& line) override;
  using TAPerfo::Report;

  ~TAPerfoAv() override;

 private:
  int _length = 60;  // the unit of the rate in seconds
};

#endif  // VOR_PERFO_TAPERFOAV_H
