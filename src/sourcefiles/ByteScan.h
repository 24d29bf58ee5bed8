#ifndef VOR_SOURCEFILES_BYTESCAN_H
#define VOR_SOURCEFILES_BYTESCAN_H

#if defined(__SSE2__)
#include <emmintrin.h>

#include <bit>
#endif

namespace vor {

/// Moves \a in to the next byte that is one of Stops, or to \a end.  If isCopying, copies the bytes
/// before it to \a out and moves \a out to the end of the copy.
///
/// \a out must have room for all bytes from \a in to \a end, because bytes after the copy are
/// overwritten.
template <bool isCopying, char... Stops>
inline void PassTo(const char*& in, const char* end, char*& out) {
#if defined(__SSE2__)
  while (end - in >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    if constexpr (isCopying) _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block);
    __m128i isStop = _mm_setzero_si128();
    ((isStop = _mm_or_si128(isStop, _mm_cmpeq_epi8(block, _mm_set1_epi8(Stops)))), ...);
    const auto stops = static_cast<unsigned>(_mm_movemask_epi8(isStop));
    const int passed = stops == 0 ? 16 : std::countr_zero(stops);
    in += passed;
    if constexpr (isCopying) out += passed;
    if (stops != 0) return;
  }
#endif
  for (; in != end && ((*in != Stops) && ...); ++in) {
    if constexpr (isCopying) *out++ = *in;
  }
}

}  // namespace vor

#endif  // VOR_SOURCEFILES_BYTESCAN_H
