#ifndef VOR_PERFO_PERFOFORMAT_H
#define VOR_PERFO_PERFOFORMAT_H

#include "../base/Export.h"
#include "../base/VorString.h"

// The compact forms in which counters report quantities and times.

/// A count with at most three significant digits (1000 has four): 999, 1.5k, 2M.  The suffix k
/// stands for 1,024, M for 1,024^2 and T for 1,024^3.  A number above 1,000 is divided, so 1,001 is
/// 0.97k.  A negative number is shown in full.
VOR_API VorString countToStr(int n) noexcept;

/// A time in \a seconds as days, hours, minutes and seconds: 59s, 1h2m5s, 1d1h.  Parts that are
/// zero are left out.  If the text shows both days and hours, it shows no minutes and
/// seconds.  The text of a negative time is empty.
VOR_API VorString lengthToStr(long seconds) noexcept;

#endif  // VOR_PERFO_PERFOFORMAT_H
