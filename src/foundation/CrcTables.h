#ifndef VOR_FOUNDATION_CRCTABLES_H
#define VOR_FOUNDATION_CRCTABLES_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace vor {

/// A remainder times x, modulo the polynomial of crc.
constexpr std::uint32_t CrcTimesX(std::uint32_t remainder) {
  return remainder << 1 ^ (remainder >> 31 != 0 ? 0xC5u : 0u);
}

/// x to the power \a exponent, modulo the polynomial of crc.
constexpr std::uint32_t CrcPowerOfX(int exponent) {
  std::uint32_t remainder = 1;
  for (int i = 0; i < exponent; ++i) remainder = CrcTimesX(remainder);
  return remainder;
}

constexpr std::size_t kCrcSlice = 16;  // bytes of one step
using CrcTables = std::array<std::array<std::uint32_t, 256>, kCrcSlice>;

// tables[k][b] is the remainder of the byte b followed by k + 4 zero bytes.
constexpr CrcTables MakeCrcTables() {
  CrcTables tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t remainder = byte << 24;
    for (int bit = 0; bit < 8; ++bit) remainder = CrcTimesX(remainder);
    tables[0][byte] = remainder;
  }
  for (std::size_t k = 1; k < kCrcSlice; ++k) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t before = tables[k - 1][byte];
      tables[k][byte] = before << 8 ^ tables[0][before >> 24];
    }
  }
  return tables;
}

inline constexpr CrcTables kCrcTables = MakeCrcTables();

/// The remainder of a message after \a size more bytes; 0 is the remainder of an empty message.  It
/// includes the 32 zero bits after the message.
inline std::uint32_t CrcByTables(std::uint32_t remainder, const unsigned char* data,
                                 std::size_t size) {
  for (; size >= kCrcSlice; data += kCrcSlice, size -= kCrcSlice) {
    std::uint32_t next = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      next ^= kCrcTables[kCrcSlice - 1 - i][(remainder >> (24 - 8 * i) & 0xFF) ^ data[i]];
    }
    for (std::size_t i = 4; i < kCrcSlice; ++i) next ^= kCrcTables[kCrcSlice - 1 - i][data[i]];
    remainder = next;
  }
  for (; size > 0; ++data, --size) {
    remainder = remainder << 8 ^ kCrcTables[0][remainder >> 24 ^ *data];
  }
  return remainder;
}

}  // namespace vor

#endif  // VOR_FOUNDATION_CRCTABLES_H
