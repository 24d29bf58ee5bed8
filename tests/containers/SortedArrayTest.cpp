// What the three sorted indexes have in common, each with keys of its own kind.

#include "containers/SortedArray.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <array>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "containers/TAIndex.h"
#include "containers/TAIndexB.h"
#include "containers/TAIndexI.h"

namespace {

struct Texts {
  using Key = std::string;
  using Order = std::less<>;
  static constexpr int kStep = 10;

  static Key Nth(unsigned i) {  // of several lengths, with long common beginnings
    static const char* const kEnds[] = {"", "x", "\xff", "/File.cpp", "/LocalInterfaces/File.h"};
    return "/build/Module" + std::to_string(i / std::size(kEnds)) + kEnds[i % std::size(kEnds)];
  }
  static const char* Argument(const Key& key) { return key.c_str(); }
  Key Stored(int position) const { return index.keys[position]; }

  TAIndex index;
};

struct Records {
  using Key = std::array<int, 2>;
  using Order = std::greater<>;
  static constexpr int kStep = 1000;

  // The difference of two words may be more than an int can hold.
  static Key Nth(unsigned i) {
    return {(static_cast<int>(i % 7) - 3) * 700'000'000, -static_cast<int>(i)};
  }
  static const void* Argument(const Key& key) { return key.data(); }
  Key Stored(int position) const {
    Key key;
    memcpy(key.data(), index.keys[position], sizeof key);
    return key;
  }

  TAIndexB index{2};
};

struct Numbers {
  using Key = int;
  using Order = std::less<>;
  static constexpr int kStep = 10;

  static Key Nth(unsigned i) { return i == 0 ? INT_MIN : INT_MAX - static_cast<int>(i); }
  static Key Argument(Key key) { return key; }
  Key Stored(int position) const { return index.keys[position]; }

  TAIndexI index;
};

char values[64];  // to distinguish entries

template <typename Keys>
class SortedArray : public testing::Test {
 protected:
  void ExpectSameAsReference() {
    ASSERT_EQ(_keys.index.count, static_cast<int>(_reference.size()));
    ASSERT_LT(_keys.index.count, _keys.index.capacity);
    int position = 0;
    for (const auto& [key, value] : _reference) {
      ASSERT_EQ(_keys.Stored(position), key);
      ASSERT_EQ(_keys.index.values[position], value);
      ASSERT_EQ(_keys.index.IsIn(Keys::Argument(key)), position++);
    }
  }

  Keys _keys;
  std::map<typename Keys::Key, void*, typename Keys::Order> _reference;
};

using AllKeys = testing::Types<Texts, Records, Numbers>;
TYPED_TEST_SUITE(SortedArray, AllKeys);

}  // namespace

TYPED_TEST(SortedArray, BehavesAsASortedMap) {
  std::mt19937 random(7);
  auto& index = this->_keys.index;
  for (int i = 0; i < 20000; ++i) {
    const auto key = TypeParam::Nth(static_cast<unsigned>(random() % 700));
    const auto argument = TypeParam::Argument(key);
    const auto entry = this->_reference.find(key);
    ASSERT_EQ(index.IsIn(argument) >= 0, entry != this->_reference.end());
    ASSERT_EQ(index[argument], entry == this->_reference.end() ? nullptr : entry->second);
    if (random() % 4000 == 0) {
      ASSERT_EQ(index.Reset(), 0);
      this->_reference.clear();
    } else if (random() % 3 == 0) {
      const int position = index.IsIn(argument);
      ASSERT_EQ(index.RemovePosition(position), position < 0 ? 1 : 0);
      ASSERT_EQ(index.RemovePosition(index.count), 1);
      this->_reference.erase(key);
    } else {
      void* value = &values[random() % sizeof values];
      index.Append(argument, value);
      this->_reference.try_emplace(key, value);
    }
    if (i % 500 == 0) this->ExpectSameAsReference();
  }
  this->ExpectSameAsReference();
}

TYPED_TEST(SortedArray, GrowsByStepsAndThenByHalves) {
  auto& index = this->_keys.index;
  std::vector<int> capacities = {index.capacity};
  for (unsigned i = 0; i < 25 * TypeParam::kStep; ++i) {
    index.Append(TypeParam::Argument(TypeParam::Nth(i)), nullptr);
    if (index.capacity == capacities.back()) continue;
    ASSERT_EQ(index.count, capacities.back());  // the key that would have left no slot free
    capacities.push_back(index.capacity);
  }
  std::vector<int> expected;
  for (const int halves : {2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 33, 44, 55}) {
    expected.push_back(halves * TypeParam::kStep / 2);
  }
  EXPECT_EQ(capacities, expected);
}
