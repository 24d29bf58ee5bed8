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

// The polynomial of 16 bytes: neighbours are added up with their weights to pairs, then to fours,
// which still fit 32 bits, and the fours with their powers modulo 2^32.
inline std::uint32_t OfPiece(__m128i bytes) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i by31 = _mm_set1_epi32(1 << 16 | 31);
  const __m128i by961 = _mm_set1_epi32(1 << 16 | 961);
  const __m128i first = _mm_madd_epi16(_mm_unpacklo_epi8(bytes, zero), by31);
  const __m128i second = _mm_madd_epi16(_mm_unpackhi_epi8(bytes, zero), by31);
  const __m128i fours = _mm_madd_epi16(_mm_packs_epi32(first, second), by961);
  const auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(fours));
  const auto high = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(fours, fours)));
  return static_cast<std::uint32_t>(low) * kPowers.of31[12] +
         static_cast<std::uint32_t>(low >> 32) * kPowers.of31[8] +
         static_cast<std::uint32_t>(high) * kPowers.of31[4] +
         static_cast<std::uint32_t>(high >> 32);
}

inline std::uint64_t Load64(const char* bytes) {
  std::uint64_t word;
  memcpy(&word, bytes, sizeof word);
  return word;
}

// Fewer than 16 bytes, moved to the end of a piece whose first bytes are zero and add nothing.
inline __m128i LoadEnd(const char* text, std::size_t length) {
  if (length >= 8) {
    const std::uint64_t front = length == 8 ? 0 : Load64(text) << (8 * (16 - length));
    return _mm_set_epi64x(static_cast<long long>(Load64(text + length - 8)),
                          static_cast<long long>(front));
  }
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < length; ++i) {
    word |= static_cast<std::uint64_t>(static_cast<unsigned char>(text[i]))
            << (8 * (8 - length + i));
  }
  return _mm_set_epi64x(static_cast<long long>(word), 0);
}

#endif

}  // namespace keyhash

/// The hash of a key: from 0 on, hash x 31 + byte for each of its \a length bytes, as unsigned
/// bytes and modulo 2^32.  The order of a walk over a map follows from it.
inline std::uint32_t KeyHash(const char* key, std::size_t length) {
  using keyhash::kPiece;
  using keyhash::kPowers;
  std::uint32_t hash = 0;
#if defined(__SSE2__)
  for (; length >= kPiece; key += kPiece, length -= kPiece) {
    hash = hash * kPowers.of31[kPiece] +
           keyhash::OfPiece(_mm_loadu_si128(reinterpret_cast<const __m128i*>(key)));
  }
  if (length > 0) {
    hash = hash * kPowers.of31[length] + keyhash::OfPiece(keyhash::LoadEnd(key, length));
  }
#else
  for (std::size_t i = 0; i < length; ++i) hash = hash * 31 + static_cast<unsigned char>(key[i]);
#endif
  return hash;
}

}  // namespace vor

#endif  // VOR_CONTAINERS_KEYHASH_H
