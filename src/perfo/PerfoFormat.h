#ifndef VOR_PERFO_PERFOFORMAT_H
#define VOR_PERFO_PERFOFORMAT_H

#include "base/Export.h"
#include "base/VorString.h"

// The compact forms in which counters tell quantities and times.

/// A count with three significant digits at most, but for 1000: 999, 1.5k, 2M.  Each of the
/// suffixes k, M and T stands for another factor of 1,024, T being the third; a number is divided
/// while it is more than 1,000, so 1,001 is 0.97k.  A negative number is told as it is.
VOR_API VorString countToStr(int n) noexcept;

/// A time in \a seconds in days, hours, minutes and seconds: 59s, 1h2m5s, 1d1h.  Parts that are
/// zero are left out, and days together with hours end the text.  A negative time has no text.
VOR_API VorString lengthToStr(long seconds) noexcept;

#endif  // VOR_PERFO_PERFOFORMAT_H
