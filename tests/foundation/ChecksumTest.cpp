#include "foundation/Checksum.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "foundation/CrcTables.h"

namespace {

unsigned BitByBit(std::string text, unsigned seed) {
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(seed >> shift & 0xFF);
  unsigned remainder = 0;
  for (const char c : text) {
    for (int bit = 7; bit >= 0; --bit) {
      const bool carry = (remainder & 0x80000000u) != 0;
      remainder = remainder << 1 | (static_cast<unsigned char>(c) >> bit & 1u);
      if (carry) remainder ^= 0xC5;
    }
  }
  return remainder;
}

}  // namespace

TEST(Crc, KnownValues) {
  EXPECT_EQ(crc("abc", 1), 0x290D42AEu);
  EXPECT_EQ(crc("123456789", 0), 0x93BCE8CFu);
}

TEST(Crc, EqualsTheBitSerialFormAtEveryLength) {
  std::mt19937 random(3);
  for (std::size_t size = 0; size < 5000; size += size < 700 ? 1 : size / 16) {
    std::string text(size, '\0');
    for (char& c : text) c = static_cast<char>(1 + random() % 255);
    const auto seed = static_cast<unsigned>(random());
    const unsigned want = BitByBit(text, seed);
    EXPECT_EQ(crc(text.c_str(), seed), want) << size;
    // Long texts too, which processors that fold leave to the folding.
    const auto* data = reinterpret_cast<const unsigned char*>(text.data());
    EXPECT_EQ(vor::CrcByTables(0, data, size) ^ seed, want) << size;
  }
}
