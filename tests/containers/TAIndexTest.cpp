#include "containers/TAIndex.h"

#include <gtest/gtest.h>
#include <limits.h>

#include <future>
#include <string>
#include <tuple>
#include <vector>

#include "containers/PositionHints.h"

namespace {

void AppendNumbers(TAIndex& index, int count) {
  for (int i = 0; i < count; ++i) index.Append(std::to_string(i).c_str(), nullptr);
}

}  // namespace

TEST(TAIndex, FindsPrefixesOfATextAndNoNull) {
  TAIndex index;
  for (const char* key : {"", "ab", "abcd", "abce", "b", "12345678"}) index.Append(key, nullptr);
  const std::tuple<const char*, int, int> rows[] = {
      // a text, a length, the position
      {"abcdef", 0, 0},   {"abcdef", 1, -1},   {"abcdef", 2, 2},     {"abcdef", 4, 3},
      {"abce", 4, 4},     {"", 1, -1},         {"ab\0cd", 5, -1},    {"abcdef", -1, -1},
      {"b", INT_MAX, -1}, {"123456789", 8, 1}, {"123456789", 9, -1},
  };
  for (const auto& [key, length, position] : rows) {
    EXPECT_EQ(index.IsIn(key, length), position) << key << " " << length;
  }
  EXPECT_EQ(index.Append(nullptr, &index), nullptr);
  EXPECT_EQ(index[nullptr], nullptr);
  EXPECT_EQ(index.IsIn(nullptr), -1);
  EXPECT_EQ(index.IsIn(nullptr, 0), -1);
}

TEST(TAIndex, TakesStepsOfAtLeastTenBeyondTheInlineSlots) {
  const int askedAndStep[][2] = {{INT_MIN, 10}, {4, 10}, {11, 11}, {50, 50}};
  for (const auto& [asked, step] : askedAndStep) {
    TAIndex index(asked);
    const void* inlineKeys = index.keys;
    AppendNumbers(index, 9);
    EXPECT_EQ(index.Reset(), 0);
    AppendNumbers(index, 9);
    EXPECT_EQ(index.keys, inlineKeys) << asked;
    EXPECT_EQ(index.capacity, 10) << asked;
    AppendNumbers(index, 10);
    EXPECT_NE(index.keys, inlineKeys) << asked;
    EXPECT_EQ(index.capacity, 10 + step) << asked;
    index.Reset();
    EXPECT_EQ(index.capacity, step) << asked;
  }
}

TEST(TAIndex, TakesItsOwnKeysAsArguments) {
  TAIndex index;
  for (int i = 11; i < 20; ++i) index.Append(std::to_string(i).c_str(), nullptr);
  EXPECT_STREQ(index.Append(index.keys[4] + 1, nullptr), "5");  // grows
  EXPECT_EQ(index.Append(index.keys[5], nullptr), index.keys[5]);
  EXPECT_EQ(index.count, 10);
}

TEST(TAIndex, FindsKeysChosenToCrowdAHashTable) {
  TAIndex index;
  std::vector<std::string> removed;
  for (unsigned i = 0; index.count < 600; ++i) {
    const std::string key = std::to_string(i);
    if (vor::PositionHints::TagOf(vor::TextWords(key.data(), key.size())) % 1024 != 7) continue;
    index.Append(key.c_str(), nullptr);
  }
  while (index.count > 100) {
    removed.push_back(index.keys[index.count / 2]);
    index.RemovePosition(index.count / 2);
  }
  for (int i = 0; i < index.count; ++i) EXPECT_EQ(index.IsIn(index.keys[i]), i);
  for (const std::string& key : removed) EXPECT_EQ(index.IsIn(key.c_str()), -1);
}

TEST(TAIndex, FindsKeysOnSeveralThreadsAtOnce) {
  TAIndex index;
  AppendNumbers(index, 500);
  const auto countFound = [&index] {
    int found = 0;
    for (int i = 0; i < 1000; ++i) found += index.IsIn(std::to_string(i).c_str()) >= 0;
    return found;
  };
  std::future<int> other = std::async(std::launch::async, countFound);
  EXPECT_EQ(countFound(), 500);
  EXPECT_EQ(other.get(), 500);
}

TEST(TAIndexDeathTest, MoreSlotsThanAnIntCanCountEndTheProcess) {
  TAIndex index(INT_MAX);
  AppendNumbers(index, 9);
  EXPECT_DEATH(index.Append("last", nullptr),
               "TAIndex::increaseAllocSize failed, memory allocation failed");
}
