#ifndef VOR_CONTAINERS_KEYHASH_H
#define VOR_CONTAINERS_KEYHASH_H

#include <string.h>

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vor {

namespace keyhash {

constexpr std::size_t kPiece = 16;  // bytes evaluated at once

struct Powers {
  std::uint32_t of31[kPiece + 1] = {1};
  constexpr Powers() {
    for (std::size_t i = 1; i <= kPiece; ++i) of31[i] = of31[i - 1] * 31;
  }
};
inline constexpr Powers kPowers;

#if defined(__SSE2__)

// The polynomial of a text, kept as four partial sums: one for each position modulo 4.
class Sums {
 public:
  // Appends the last bytes of a piece; \a power is 31 to the power of their number.
  void Append(__m128i bytes, std::uint32_t power) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i by31 = _mm_set1_epi32(1 << 16 | 31);
    const __m128i by961 = _mm_set1_epi32(1 << 16 | 961);
    const __m128i first = _mm_madd_epi16(_mm_unpacklo_epi8(bytes, zero), by31);
    const __m128i second = _mm_madd_epi16(_mm_unpackhi_epi8(bytes, zero), by31);
    const __m128i fours = _mm_madd_epi16(_mm_packs_epi32(first, second), by961);
    const __m128i factor = _mm_set1_epi32(static_cast<int>(power));
    _even = _mm_add_epi32(_mm_mul_epu32(_even, factor), fours);
    _odd = _mm_add_epi32(_mm_mul_epu32(_odd, factor), _mm_srli_epi64(fours, 32));
  }

  std::uint32_t Total() const {
    const __m128i ofEven =
        _mm_set_epi32(0, static_cast<int>(kPowers.of31[4]), 0, static_cast<int>(kPowers.of31[12]));
    const __m128i ofOdd = _mm_set_epi32(0, 1, 0, static_cast<int>(kPowers.of31[8]));
    const __m128i both = _mm_add_epi32(_mm_mul_epu32(_even, ofEven), _mm_mul_epu32(_odd, ofOdd));
    return static_cast<std::uint32_t>(
        _mm_cvtsi128_si32(_mm_add_epi32(both, _mm_unpackhi_epi64(both, both))));
  }

 private:
  // The sums are in the lower half of each 64 bits; the upper halves have no meaning.
  __m128i _even = _mm_setzero_si128();  // of the first and third four of a piece
  __m128i _odd = _mm_setzero_si128();
};

// The last bytes of a text of 16 or more, at the end of a piece whose first bytes are zero and add
// nothing.
inline __m128i LoadLast(const char* end, std::size_t count) {
  static constexpr char kKeep[2 * kPiece] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
                                             0,  0,  0,  0,  0,  -1, -1, -1, -1, -1, -1,
                                             -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
  const __m128i keep = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kKeep + count));
  return _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(end - kPiece)), keep);
}

#endif

}  // namespace keyhash

/// The hash of a key of \a length bytes: starting at 0, hash x 31 + byte for each unsigned byte,
/// modulo 2^32.  It determines the order of walks over a map.
inline std::uint32_t KeyHash(const char* key, std::size_t length) {
  using keyhash::kPiece;
  using keyhash::kPowers;
#if defined(__SSE2__)
  if (length >= kPiece) {
    const char* const end = key + length;
    keyhash::Sums sums;
    for (; length >= kPiece; key += kPiece, length -= kPiece) {
      sums.Append(_mm_loadu_si128(reinterpret_cast<const __m128i*>(key)), kPowers.of31[kPiece]);
    }
    sums.Append(keyhash::LoadLast(end, length), kPowers.of31[length]);
    return sums.Total();
  }
#endif
  std::uint32_t hash = 0;
  for (std::size_t i = 0; i < length; ++i) hash = hash * 31 + static_cast<unsigned char>(key[i]);
  return hash;
}

/// Whether two texts of \a length bytes are the same.  Optimised for texts that usually are.
inline bool IsSameText(const char* one, const char* other, std::size_t length) {
#if defined(__SSE2__)
  if (length >= keyhash::kPiece) {
    const auto isSame = [one, other](std::size_t at) {
      return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(one + at)),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(other + at)));
    };
    const std::size_t last = length - keyhash::kPiece;
    __m128i same = isSame(last);
    for (std::size_t at = 0; at < last; at += keyhash::kPiece) {
      same = _mm_and_si128(same, isSame(at));
    }
    return _mm_movemask_epi8(same) == 0xFFFF;
  }
#endif
  return memcmp(one, other, length) == 0;
}

}  // namespace vor

#endif  // VOR_CONTAINERS_KEYHASH_H
