#include "persistence/TAPAttr.h"

#include <gtest/gtest.h>
#include <string.h>

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "persistence/TAPObject.h"

namespace {

// A number that an int may not hold is an error, never cut.
static_assert(std::is_constructible_v<TAPAttr, bool>);
static_assert(!std::is_constructible_v<TAPAttr, unsigned>);
static_assert(!std::is_constructible_v<TAPAttr, float>);

VorListValTAPAttr ListOf(const std::vector<TAPAttr>& values) {
  VorListValTAPAttr list;
  for (const TAPAttr& value : values) list.Append(value);
  return list;
}

// One value of each type, in the order of the type codes.  What they refer to ends the process when
// it is destroyed if a reference on it was not released.
class EachType : public testing::Test {
 protected:
  TAPObject object, otherObject;
  TAPName name{"step"};
  TAPPath path{&name}, otherPath{&name};
  std::vector<TAPAttr> values = {
      TAPAttr(), "text", TAFileName("/dir/file"), &object, ListOf({1, 2}), 5, &path};
};

template <typename X>
X* Released(X* shared) {
  shared->Release();
  return shared;
}

TEST_F(EachType, ReturnsTheDefaultOrEndsTheProcessIfTheTypeIsAnother) {
  VorListValTAPAttr otherList;
  struct {
    const char* name;
    std::function<void(TAPAttr&)> get;
    std::function<bool(TAPAttr&)> isDefault;
  } const getters[] = {
      {"GetString", [](TAPAttr& value) { value.GetString(); },
       [](TAPAttr& value) { return value.GetString("other") == "other"; }},
      {"GetFileName", [](TAPAttr& value) { value.GetFileName(); },
       [](TAPAttr& value) { return value.GetFileName("other") == "other"; }},
      {"GetObject", [](TAPAttr& value) { Released(value.GetObject()); },
       [&](TAPAttr& value) { return Released(value.GetObject(&otherObject)) == &otherObject; }},
      {"GetList", [](TAPAttr& value) { value.GetList(); },
       [&](TAPAttr& value) { return &value.GetList(otherList) == &otherList; }},
      {"GetInteger", [](TAPAttr& value) { value.GetInteger(); },
       [](TAPAttr& value) { return value.GetInteger(7) == 7; }},
      {"GetPath", [](TAPAttr& value) { Released(value.GetPath()); },
       [&](TAPAttr& value) { return Released(value.GetPath(&otherPath)) == &otherPath; }},
  };
  std::size_t code = 0;
  for (const auto& [getter, get, isDefault] : getters) {
    EXPECT_DEATH(get(values[code]), std::string("\nTAPAttr::") + getter + " : bad type for get\n");
    get(values[++code]);
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_EQ(isDefault(values[i]), i != code) << getter << i;
      EXPECT_EQ(values[i].IsType(static_cast<int>(code)), i == code);
    }
  }
  EXPECT_EQ(TAPAttr(1).GetObject(nullptr), nullptr);
  EXPECT_STREQ(TAPAttr(static_cast<const char*>(nullptr)).GetString(), "");
}

TEST_F(EachType, IsOrderedByItsCodeAndThenItsValue) {
  std::vector<TAPAttr> ordered = {
      TAPAttr(), "text",    TAFileName("/dir/file"), &object, &otherObject, ListOf({}), -1, 5,
      &path,     &otherPath};
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    const TAPAttr& itself = ordered[i];
    ordered[i] = itself;
    for (std::size_t k = 0; k < ordered.size(); ++k) {
      EXPECT_EQ(ordered[i] < ordered[k], i < k);
      EXPECT_EQ(ordered[i] > ordered[k], i > k);
      EXPECT_EQ(ordered[i] == ordered[k], i == k);
    }
  }
}

TEST(TAPAttr, ComparesListsBySizeAndCopiesThemDeeply) {
  TAPAttr a(ListOf({"a"})), two(ListOf({1, ListOf({"inner"})})), b(a);
  b.GetList()[1] = "b";
  EXPECT_STREQ(a.GetList()[1].GetString(), "a");
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a == two);
  EXPECT_FALSE(a < two);
  EXPECT_FALSE(a > two);
  two = two.GetList()[2];  // a part of itself
  two = std::move(two.GetList()[1]);
  EXPECT_STREQ(two.GetString(), "inner");
}

// The judge asks the C library itself: the number that it returns differs between machines.
TEST(TAPAttr, OrdersTextsByTheExactResultOfStrcmp) {
  int (*const volatile compare)(const char*, const char*) = strcmp;
  const char* const texts[] = {"", "\x01", "a", "b", "c", "\xe9", "a long text", "a long tex"};
  for (const char* left : texts) {
    for (const char* right : texts) {
      const int number = compare(left, right);
      const std::pair<TAPAttr, TAPAttr> pairs[] = {{left, right},
                                                   {TAFileName(left), TAFileName(right)}};
      for (const auto& [x, y] : pairs) {
        EXPECT_EQ(x < y, number == -1) << left << " " << right;
        EXPECT_EQ(x > y, number == 1) << left << " " << right;
        EXPECT_EQ(x != y, number != 0) << left << " " << right;
      }
    }
  }
}

}  // namespace
