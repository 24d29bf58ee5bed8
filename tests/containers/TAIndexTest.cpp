#include "containers/TAIndex.h"

#include <gtest/gtest.h>
#include <limits.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

// Distinct values to tell entries apart by.
void* Value(unsigned long i) {
  static char tags[1024];
  return &tags[i % sizeof tags];
}

std::string Joined(const TAIndex& index) {
  std::string all;
  for (int i = 0; i < index.count; ++i) all += std::string(index.keys[i]) + " ";
  return all;
}

using Reference = std::map<std::string, void*>;

void ExpectSame(const TAIndex& index, const Reference& reference) {
  ASSERT_EQ(index.count, static_cast<int>(reference.size()));
  ASSERT_LT(index.count, index.capacity);
  int position = 0;
  for (const auto& [key, value] : reference) {
    ASSERT_EQ(index.keys[position], key);
    ASSERT_EQ(index.values[position], value);
    ASSERT_EQ(index.IsIn(key.c_str()), position);
    ++position;
  }
}

}  // namespace

TEST(TAIndex, KeepsKeysInOrderAndTheFirstValue) {
  TAIndex index;
  index.Append("b", Value(2));
  index.Append("a", Value(1));
  index.Append("c", Value(3));
  EXPECT_EQ(index.Append("b", Value(9)), index.keys[1]);
  EXPECT_EQ(Joined(index), "a b c ");
  EXPECT_EQ(index["b"], Value(2));
  EXPECT_EQ(index.IsIn("c"), 2);
}

TEST(TAIndex, OrdersByUnsignedBytes) {
  TAIndex index;
  for (const char* key : {"\xe9", "z", "", "~", "a"}) index.Append(key, nullptr);
  EXPECT_EQ(Joined(index), " a z ~ \xe9 ");
  for (int i = 0; i < index.count; ++i) EXPECT_EQ(index.IsIn(index.keys[i]), i);
}

TEST(TAIndex, FindsTheFirstBytesOfAText) {
  TAIndex index;
  for (const char* key : {"", "ab", "abcd", "abce", "b"}) index.Append(key, nullptr);
  const struct {
    const char* key;
    int length;
    int position;
  } rows[] = {
      {"abcdef", 0, 0},   {"abcdef", 1, -1},   {"abcdef", 2, 1}, {"abcdef", 3, -1},
      {"abcdef", 4, 2},   {"abcdef", 5, -1},   {"abce", 4, 3},   {"b", 1, 4},
      {"b", 2, -1},       {"ab\0cd", 5, -1},   {"", 0, 0},       {"", 1, -1},
      {"abcdef", -1, -1}, {"ab", INT_MAX, -1}, {nullptr, 0, -1},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(index.IsIn(row.key, row.length), row.position) << row.key << " " << row.length;
  }
}

TEST(TAIndex, AnswersAbsentForTheEmptyIndexAndForNull) {
  TAIndex index;
  EXPECT_EQ(index["a"], nullptr);
  EXPECT_EQ(index.IsIn("a"), -1);
  EXPECT_EQ(index.IsIn("a", 1), -1);
  EXPECT_EQ(index.Append(nullptr, Value(1)), nullptr);
  EXPECT_EQ(index.IsIn(nullptr), -1);
  EXPECT_EQ(index[nullptr], nullptr);
  EXPECT_EQ(index.count, 0);
}

TEST(TAIndex, RemovesOnlyPositionsItHas) {
  TAIndex index;
  for (const char* key : {"a", "b", "c"}) index.Append(key, nullptr);
  EXPECT_EQ(index.RemovePosition(-1), 1);
  EXPECT_EQ(index.RemovePosition(3), 1);
  EXPECT_EQ(index.RemovePosition(1), 0);
  EXPECT_EQ(Joined(index), "a c ");
  EXPECT_EQ(index.RemovePosition(1), 0);
  EXPECT_EQ(index.RemovePosition(0), 0);
  EXPECT_EQ(index.RemovePosition(0), 1);
}

TEST(TAIndex, GrowsByStepsAndThenByHalves) {
  TAIndex index;
  const void* inlineKeys = index.keys;
  std::vector<int> capacities = {index.capacity};
  for (int i = 0; i < 300; ++i) {
    index.Append(std::to_string(1000 + i).c_str(), nullptr);
    if (index.capacity != capacities.back()) capacities.push_back(index.capacity);
    ASSERT_EQ(static_cast<const void*>(index.keys) == inlineKeys, index.count <= 9);
  }
  EXPECT_EQ(capacities,
            (std::vector<int>{10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 165, 220, 275, 330}));
}

TEST(TAIndex, TakesStepsOfAtLeastTen) {
  const struct {
    int asked;
    int step;
  } rows[] = {{-1, 10}, {4, 10}, {10, 10}, {11, 11}, {50, 50}};
  for (const auto& row : rows) {
    TAIndex index(row.asked);
    EXPECT_EQ(index.step, row.step);
    EXPECT_EQ(index.capacity, 10);
    for (int i = 0; i < 10; ++i) index.Append(std::to_string(i).c_str(), nullptr);
    EXPECT_EQ(index.capacity, 10 + row.step);
  }
}

TEST(TAIndex, ResetKeepsTheArraysAndNeverClaimsMoreThanTheyHold) {
  TAIndex index(50);
  index.Append("a", nullptr);
  EXPECT_EQ(index.Reset(), 0);
  EXPECT_EQ(index.capacity, 10);
  for (int i = 0; i < 100; ++i) index.Append(std::to_string(i).c_str(), nullptr);
  EXPECT_EQ(index.capacity, 110);
  char** keys = index.keys;
  index.Reset();
  EXPECT_EQ(index.keys, keys);
  EXPECT_EQ(index.count, 0);
  EXPECT_EQ(index.capacity, 50);
  Reference reference;
  for (unsigned i = 0; i < 100; ++i) {
    index.Append(std::to_string(i).c_str(), Value(i));
    reference[std::to_string(i)] = Value(i);
  }
  EXPECT_EQ(index.capacity, 150);
  ExpectSame(index, reference);
}

TEST(TAIndex, BehavesAsASortedMap) {
  std::mt19937 random(7);
  TAIndex index;
  Reference reference;
  for (int step = 0; step < 20000; ++step) {
    std::string key;
    for (auto i = random() % 12; i > 0; --i) key += "a/\xff"[random() % 3];
    if (random() % 1000 == 0) {
      index.Reset();
      reference.clear();
    } else if (random() % 3 == 0 && index.count > 0) {
      const int position = static_cast<int>(random() % static_cast<unsigned>(index.count));
      reference.erase(index.keys[position]);
      ASSERT_EQ(index.RemovePosition(position), 0);
    } else {
      void* value = Value(random());
      const auto entry = reference.try_emplace(key, value).first;
      ASSERT_EQ(index.Append(key.c_str(), value), key);
      ASSERT_EQ(index[key.c_str()], entry->second);
    }
    if (step % 500 == 0) ExpectSame(index, reference);
  }
  ExpectSame(index, reference);
}

TEST(TAIndex, TakesItsOwnKeysAsArguments) {
  TAIndex index;
  for (int i = 0; i < 9; ++i) index.Append(("key" + std::to_string(i)).c_str(), nullptr);
  EXPECT_EQ(index.Append(index.keys[4] + 1, nullptr), std::string("ey4"));  // grows
  EXPECT_EQ(index.Append(index.keys[5], nullptr), index.keys[5]);
  EXPECT_EQ(index.count, 10);
  EXPECT_EQ(index.IsIn(index.keys[3]), 3);
}
