#include "persistence/TAUUIDGenerator.h"

#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <bitset>
#include <fstream>
#include <future>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "persistence/MachineNumber.h"
#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

// Of a text, each character of which stands for six bits.
int Field(const std::string& text, std::size_t byte, std::size_t bytes) {
  const std::string alphabet = "+-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::string bits;
  for (char c : text) bits += std::bitset<6>(alphabet.find(c)).to_string();
  return static_cast<int>(std::stoul(bits.substr(byte * 8, bytes * 8), nullptr, 2));
}

std::vector<std::string> Draw(int count) {
  TAUUIDGenerator generator;
  std::vector<std::string> texts;
  for (int i = 0; i < count; ++i) texts.emplace_back(generator.Get());
  return texts;
}

// One more than the counter has values: the last one has to wait for another second.
TEST(TAUUIDGenerator, HoldsTimeMachineProcessAndCount) {
  const auto before = static_cast<int>(time(nullptr));
  const std::vector<std::string> texts = Draw(65537);
  const auto after = static_cast<int>(time(nullptr));
  EXPECT_NE(texts.front(), texts.back());
  for (std::size_t i = 0; i < texts.size(); i += i < 64 ? 1 : 64) {  // 64 for each character
    const std::string& text = texts[i];
    ASSERT_EQ(text.size(), 20u);
    EXPECT_LE(before, Field(text, 0, 4));
    EXPECT_LE(Field(text, 0, 4), after);
    EXPECT_EQ(Field(text, 4, 4), TAUUIDGenerator::GetMachineIdent());
    EXPECT_EQ(Field(text, 8, 1), 3);
    EXPECT_EQ(Field(text, 9, 4), getpid());
    EXPECT_EQ(Field(text, 13, 2), (Field(texts[0], 13, 2) + static_cast<int>(i)) % 65536);
  }
}

TEST(TAUUIDGenerator, LeavesTheTextOfAThreadThatEnded) {
  const char* text = nullptr;
  std::string copy;
  std::thread([&] { copy = text = TAUUIDGenerator().Get(); }).join();
  std::thread([] {}).join();
  EXPECT_EQ(text, copy);
}

TEST(TAUUIDGenerator, DrawsDistinctTextsInThreadsAndForks) {
  constexpr int kCount = 5000;
  const TempDir directory;
  std::vector<std::string> all = Draw(1);  // so that children inherit what is set up
  const auto drawToFile = [&] {
    std::ofstream file(directory / "drawn", std::ios::app);
    for (const std::string& text : Draw(kCount)) file << text << "\n";
    return 0;
  };
  for (int i = 0; i < 3; ++i) ASSERT_EQ(InProcess(drawToFile), 0);
  std::istringstream drawn(directory.Read("drawn"));
  for (std::string text; drawn >> text;) all.push_back(text);
  std::vector<std::future<std::vector<std::string>>> threads;
  for (int i = 0; i < 4; ++i) threads.push_back(std::async(std::launch::async, Draw, kCount));
  for (auto& thread : threads) {
    for (const std::string& text : thread.get()) all.push_back(text);
  }
  EXPECT_EQ(all.size(), 1u + 7 * kCount);
  EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), all.size());
}

TEST(TAUUIDGenerator, NumbersMachinesAndContainers) {
  EXPECT_EQ(vor::FoldMachineId("000000010000000100000003F0004000\n"), 0xf0004003u);
  for (const char* text : {"", "uninitialized\n", "0123456789abcdef0123456789abcde\n",
                           "-1234567000000000000000000000000"}) {
    EXPECT_FALSE(vor::FoldMachineId(text)) << text;
  }
  EXPECT_EQ(vor::FoldMachineId("00000001-0000-0001-0000-0003f0004000\n"), 0xf0004003u);

  constexpr std::uint64_t kNoContainer = 0xeffffffc;
  const auto one = vor::ContainerNumber(7, 1, 0xf0000010);
  EXPECT_EQ(vor::ContainerNumber(7, 1, kNoContainer), 7u);
  EXPECT_NE(vor::ContainerNumber(7, 1, 0xf0000011), one);
  EXPECT_NE(vor::ContainerNumber(7, 2, 0xf0000010), one);
}

}  // namespace
