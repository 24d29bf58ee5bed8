#ifndef VOR_FOUNDATION_CHECKSUM_H
#define VOR_FOUNDATION_CHECKSUM_H

#include "base/Export.h"

/// A 32-bit checksum of a NUL-terminated \a text, which must not be null, and \a seed: the
/// remainder of the bits of the text and then the 32 bits of the seed, most significant first,
/// modulo the polynomial x^32 + x^7 + x^6 + x^2 + 1.  Nothing is reflected, inverted or preset.
///
/// Exported under its plain C name, so that tools can look it up.  Threads: may be called from
/// any thread.
extern "C" VOR_API unsigned int crc(const char* text, unsigned int seed);

#endif  // VOR_FOUNDATION_CHECKSUM_H
