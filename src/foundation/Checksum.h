#ifndef VOR_FOUNDATION_CHECKSUM_H
#define VOR_FOUNDATION_CHECKSUM_H

#include "../base/Export.h"

/// The 32-bit checksum of a NUL-terminated \a text, which must not be null, and a \a seed.
///
/// It is the remainder of a polynomial modulo x^32 + x^7 + x^6 + x^2 + 1.  The coefficients are the
/// bits of the text followed by the 32 bits of the seed, most significant bit first.  There is no
/// reflection, no inversion and no initial value.
///
/// Exported under its plain C name, so that tools can look it up at run time.
/// Threads: may be called from any thread.
extern "C" VOR_API unsigned int crc(const char* text, unsigned int seed);

#endif  // VOR_FOUNDATION_CHECKSUM_H
