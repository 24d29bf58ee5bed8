#include "persistence/TAUUIDGenerator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <fstream>
#include <future>
#include <set>
#include <string>
#include <vector>

#include "persistence/MachineNumber.h"
#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

const std::string kAlphabet = "+-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

// The bits of a text, six for each character.
std::string Bits(const std::string& text) {
  std::string bits;
  for (char c : text) {
    for (int bit = 5; bit >= 0; --bit) bits += kAlphabet.find(c) >> bit & 1 ? '1' : '0';
  }
  return bits;
}

int Field(const std::string& text, std::size_t byte, std::size_t bytes) {
  return static_cast<int>(std::stoul(Bits(text).substr(byte * 8, bytes * 8), nullptr, 2));
}

std::vector<std::string> Draw(int count) {
  TAUUIDGenerator generator;
  std::vector<std::string> texts;
  for (int i = 0; i < count; ++i) texts.emplace_back(generator.Get());
  return texts;
}

TEST(TAUUIDGenerator, ConvertsSixBitsToACharacter) {
  unsigned char record[15] = {};
  char text[21];
  TAUUIDGenerator::Convert(record, text);
  EXPECT_EQ(text, std::string(20, '+'));
  std::string bits;
  for (unsigned i = 0; i < 15; ++i) {
    record[i] = static_cast<unsigned char>(i * 0x9d + 0x5b);
    for (int bit = 7; bit >= 0; --bit) bits += record[i] >> bit & 1 ? '1' : '0';
  }
  TAUUIDGenerator::Convert(record, text);
  EXPECT_EQ(Bits(text), bits);
}

TEST(TAUUIDGenerator, TellsTimeMachineProcessAndCount) {
  const auto before = static_cast<int>(time(nullptr));
  const std::vector<std::string> texts = Draw(65537);
  const auto after = static_cast<int>(time(nullptr));
  for (std::size_t i : {0, 1, 65535, 65536}) {
    const std::string& text = texts[i];
    ASSERT_EQ(text.size(), 20u);
    EXPECT_EQ(text[11], '1');
    EXPECT_TRUE(before <= Field(text, 0, 4) && Field(text, 0, 4) <= after);
    EXPECT_EQ(Field(text, 4, 4), TAUUIDGenerator::GetMachineIdent());
    EXPECT_EQ(Field(text, 8, 1), 3);
    EXPECT_EQ(Field(text, 9, 4), getpid());
    EXPECT_EQ(Field(text, 13, 2), (Field(texts[0], 13, 2) + static_cast<int>(i)) % 65536);
  }
}

TEST(TAUUIDGenerator, DrawsDistinctTextsInThreadsAndForks) {
  constexpr int kCount = 5000;
  const TempDir folder;
  std::vector<std::string> all = Draw(1);  // so that children inherit what is set up
  for (const char* name : {"1", "2", "3"}) {
    ASSERT_EQ(InProcess([&] {
                std::ofstream file(folder / name);
                for (const std::string& text : Draw(kCount)) file << text << "\n";
                return 0;
              }),
              0);
    std::ifstream file(folder / name);
    for (std::string text; std::getline(file, text);) all.push_back(text);
  }
  std::vector<std::future<std::vector<std::string>>> threads;
  for (int i = 0; i < 4; ++i) threads.push_back(std::async(std::launch::async, Draw, kCount));
  for (auto& thread : threads) {
    for (const std::string& text : thread.get()) all.push_back(text);
  }
  EXPECT_EQ(all.size(), 1u + 7 * kCount);
  EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), all.size());
}

TEST(TAUUIDGenerator, FoldsTheMachineIdentifier) {
  EXPECT_EQ(vor::FoldMachineId("000000010000002000000300f0004000\n"), 0xf0004321u);
  EXPECT_EQ(vor::FoldMachineId("FFFFFFFF000000000000000000000000"), 0xffffffffu);
  for (const char* text :
       {"", "uninitialized\n", "0123456789abcdef0123456789abcde",
        "0123456789abcdef0123456789abcde\n", "-1234567000000000000000000000000"}) {
    EXPECT_FALSE(vor::FoldMachineId(text)) << text;
  }
}

TEST(TAUUIDGenerator, TellsAMissingMachineNumberAndCopiesNothingBelowOne) {
  testing::internal::CaptureStdout();
  TAUUIDGenerator::Error();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unable to allocate an UUID\n");
  char to[] = "abc";
  for (int n : {-1, 0}) TAUUIDGenerator::Copy(to, "xyz", n);
  EXPECT_STREQ(to, "abc");
  TAUUIDGenerator::Copy(to, "xyz", 2);
  EXPECT_STREQ(to, "xyc");
}

}  // namespace
