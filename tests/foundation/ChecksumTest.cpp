#include "foundation/Checksum.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "foundation/CrcFolding.h"

namespace {

unsigned BitByBit(std::string_view text, unsigned seed) {
  unsigned remainder = 0;
  const auto shiftIn = [&remainder](unsigned bit) {
    const bool carry = (remainder & 0x80000000u) != 0;
    remainder = remainder << 1 | bit;
    if (carry) remainder ^= 0xC5;
  };
  for (const char c : text) {
    for (int bit = 7; bit >= 0; --bit) shiftIn(static_cast<unsigned char>(c) >> bit & 1u);
  }
  for (int bit = 31; bit >= 0; --bit) shiftIn(seed >> bit & 1u);
  return remainder;
}

std::string TextOf(std::size_t size, std::mt19937& random) {
  std::string text(size, '\0');
  for (char& c : text) c = static_cast<char>(1 + random() % 255);
  return text;
}

}  // namespace

TEST(Crc, KnownValues) {
  EXPECT_EQ(crc("", 0), 0u);
  EXPECT_EQ(crc("", 5), 5u);
  EXPECT_EQ(crc("a", 0), 0x2925u);
  EXPECT_EQ(crc("abc", 0), 0x290D42AFu);
  EXPECT_EQ(crc("abc", 1), 0x290D42AEu);
  EXPECT_EQ(crc("123456789", 0), 0x93BCE8CFu);
}

TEST(Crc, EqualsTheBitSerialFormAtEveryLength) {
  std::mt19937 random(3);
  for (std::size_t size = 0; size < 700; ++size) {
    const std::string text = TextOf(size, random);
    const unsigned seed = static_cast<unsigned>(random());
    EXPECT_EQ(crc(text.c_str(), seed), BitByBit(text, seed)) << size;
  }
}

TEST(Crc, TablesAndFoldingGiveTheSame) {
  std::mt19937 random(4);
  for (std::size_t size = vor::kCrcFoldMinimum; size < 5000; size += 1 + size / 16) {
    const std::string text = TextOf(size, random);
    const auto* data = reinterpret_cast<const unsigned char*>(text.data());
    const unsigned want = BitByBit(text, 0);
    EXPECT_EQ(vor::CrcByTables(0, data, size), want) << size;
    if (vor::CrcCanFold()) {
      EXPECT_EQ(vor::CrcByFolding(data, size), want) << size;
    }
  }
}
