#ifndef VOR_FOUNDATION_CRCFOLDING_H
#define VOR_FOUNDATION_CRCFOLDING_H

#include <cstddef>

#include "foundation/CrcTables.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

// The checksum by carry-less multiplication, on processors that have it.
//
// The message is one large polynomial.  Multiply the two 64-bit halves of a 128-bit block by the
// right powers of x modulo the polynomial: their sum is a block at a lower position that leaves the
// same remainder.  Folding adds this block to a later block of the message (four blocks at a time)
// until 16 bytes represent all whole blocks.  The tables of CrcTables.h reduce these bytes and
// those after the last whole block.

namespace vor {

constexpr std::size_t kCrcFoldBlock = 16;    // bytes
constexpr std::size_t kCrcFoldMinimum = 64;  // bytes; four blocks are folded at a time

#if defined(__x86_64__)

#define VOR_CRC_FOLDING __attribute__((target("pclmul,ssse3")))

/// Whether CrcFold may be called.
inline bool CrcCanFold() {
  return __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("ssse3") != 0;
}

// A block with its first byte as the most significant.
VOR_CRC_FOLDING inline __m128i CrcReverseBytes(__m128i block) {
  return _mm_shuffle_epi8(block,
                          _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

VOR_CRC_FOLDING inline __m128i CrcLoadBlock(const unsigned char* data) {
  return CrcReverseBytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(data)));
}

// The factors for the two halves of a block that is moved kBits bits lower.
template <int kBits>
inline __m128i CrcFoldingFactors() {
  constexpr long long kHigh = CrcPowerOfX(kBits + 64);
  constexpr long long kLow = CrcPowerOfX(kBits);
  return _mm_set_epi64x(kHigh, kLow);
}

VOR_CRC_FOLDING inline __m128i CrcFoldOnto(__m128i block, __m128i factors, __m128i target) {
  const __m128i high = _mm_clmulepi64_si128(block, factors, 0x11);
  const __m128i low = _mm_clmulepi64_si128(block, factors, 0x00);
  return _mm_xor_si128(target, _mm_xor_si128(high, low));
}

/// Stores in \a folded 16 bytes with the same remainder as the whole blocks of \a data.  Returns
/// the number of bytes in these blocks.  \a size is at least kCrcFoldMinimum.
VOR_CRC_FOLDING inline std::size_t CrcFold(const unsigned char* data, std::size_t size,
                                           unsigned char* folded) {
  const __m128i byFour = CrcFoldingFactors<512>();
  const __m128i byOne = CrcFoldingFactors<128>();
  __m128i blocks[4];
  for (std::size_t i = 0; i < 4; ++i) blocks[i] = CrcLoadBlock(data + i * kCrcFoldBlock);
  std::size_t done = kCrcFoldMinimum;
  for (; size - done >= kCrcFoldMinimum; done += kCrcFoldMinimum) {
    for (std::size_t i = 0; i < 4; ++i) {
      blocks[i] = CrcFoldOnto(blocks[i], byFour, CrcLoadBlock(data + done + i * kCrcFoldBlock));
    }
  }
  __m128i sum = blocks[0];
  for (std::size_t i = 1; i < 4; ++i) sum = CrcFoldOnto(sum, byOne, blocks[i]);
  for (; size - done >= kCrcFoldBlock; done += kCrcFoldBlock) {
    sum = CrcFoldOnto(sum, byOne, CrcLoadBlock(data + done));
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(folded), CrcReverseBytes(sum));
  return done;
}

#undef VOR_CRC_FOLDING

#else

inline bool CrcCanFold() {
  return false;
}
inline std::size_t CrcFold(const unsigned char*, std::size_t, unsigned char*) {
  return 0;
}

#endif

/// The result of CrcByTables, with all whole blocks folded first.
inline std::uint32_t CrcByFolding(const unsigned char* data, std::size_t size) {
  unsigned char folded[kCrcFoldBlock] = {};
  const std::size_t done = CrcFold(data, size, folded);
  const std::uint32_t remainder = CrcByTables(0, folded, sizeof folded);
  return CrcByTables(remainder, data + done, size - done);
}

}  // namespace vor

#endif  // VOR_FOUNDATION_CRCFOLDING_H
