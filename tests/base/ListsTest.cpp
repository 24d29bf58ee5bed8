#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/VorListPtr.h"
#include "base/VorListVal.h"
#include "base/VorListValVorUnicodeString.h"
#include "base/VorRawCollPV.h"
#include "foundation/Lists.h"

namespace {

// A value that records its destruction.
struct Tracked {
  Tracked(int theTag, std::vector<int>* theLog) : tag(theTag), log(theLog) {}
  Tracked(const Tracked&) = default;
  ~Tracked() { log->push_back(tag); }
  bool operator!=(const Tracked& other) const { return tag != other.tag; }

  int tag;
  std::vector<int>* log;
};

VorListVal<Tracked> MakeList(std::initializer_list<int> tags, std::vector<int>* log) {
  VorListVal<Tracked> list;
  for (const int tag : tags) list.Append(Tracked(tag, log));
  return list;
}

// Running out of memory ends the process; no exception leaves a list.
template <typename List>
struct NothingThrows {
  static_assert(std::is_nothrow_copy_constructible_v<List>);
  static_assert(std::is_nothrow_copy_assignable_v<List>);
};
template struct NothingThrows<VorRawCollPV>;
template struct NothingThrows<VorListPtr<int>>;
template struct NothingThrows<VorListVal<Tracked>>;
template struct NothingThrows<VorListValVorString>;
template struct NothingThrows<VorListValVorUnicodeString>;
static_assert(std::is_nothrow_constructible_v<VorRawCollPV, int>);
static_assert(std::is_nothrow_constructible_v<VorListPtr<int>, int>);
static_assert(std::is_nothrow_constructible_v<VorListVal<Tracked>, int>);
static_assert(noexcept(VorListValVorUnicodeString().Append(VorUnicodeString())));

}  // namespace

TEST(VorListVal, DestroysEachElementOnceFromLastToFirst) {
  std::vector<int> log;
  {
    VorListVal<Tracked> list = MakeList({1, 2, 3, 4}, &log);
    log.clear();
    list.RemovePosition(1);
    EXPECT_EQ(log, std::vector<int>{1});
    EXPECT_EQ(list[1].tag, 2);
    list.RemoveAll(VorCollec::KeepMemory);
    EXPECT_EQ(log, (std::vector<int>{1, 4, 3, 2}));
    list = MakeList({5, 6}, &log);
    log.clear();
  }
  EXPECT_EQ(log, (std::vector<int>{6, 5}));
}

TEST(VorListVal, CopiesAssignsAndCompares) {
  std::vector<int> log;
  VorListVal<Tracked> list = MakeList({1, 2}, &log);
  VorListVal<Tracked>& self = list;
  list = self;
  VorListVal<Tracked> other = MakeList({9}, &log);
  other = list;
  EXPECT_TRUE(other == MakeList({1, 2}, &log));
  other[1].tag = 5;
  EXPECT_EQ(list[1].tag, 1);
  EXPECT_TRUE(list != MakeList({2, 1}, &log));
  EXPECT_TRUE(list != MakeList({1}, &log));
  list.QuickSort([](Tracked* left, Tracked* right) { return right->tag - left->tag; });
  EXPECT_TRUE(list == MakeList({2, 1}, &log));
}

TEST(VorListVal, AssignsAListOfItsOwnElement) {
  struct Node {
    VorListVal<Node> children;
  };
  Node root;
  root.children.Append(Node());
  root.children[1].children.Append(Node());
  root.children[1].children.Append(Node());
  root.children = root.children[1].children;
  EXPECT_EQ(root.children.Size(), 2);
}

TEST(VorListPtr, HoldsPointersItDoesNotOwnAndReturnsReferencesToThem) {
  int one = 1, two = 2, three = 3;
  VorListPtr<int> list(4);
  for (int* number : {&one, &two, &three}) list.Append(number);
  VorListPtr<int> copy = list;
  int*& last = copy[3];
  std::swap(copy[1], last);
  EXPECT_EQ(copy[1], &three);
  EXPECT_EQ(copy[3], &one);
  EXPECT_EQ(list[1], &one);
  copy.QuickSort([](const void* left, const void* right) {
    return *static_cast<const int*>(left) - *static_cast<const int*>(right);
  });
  EXPECT_EQ(copy[1], &one);
  EXPECT_EQ(copy[3], &three);
  list.RemovePosition(1);
  EXPECT_EQ(list[1], &two);
  EXPECT_EQ(copy.Size(), 3);
}

TEST(VorListValVorString, InsertsLocatesAndAppendsItself) {
  VorListValVorString list = ListOf("a c");
  list.InsertAfter(1, "b");
  list.InsertBefore(1, "0");
  list.InsertAfter(0, "start");
  list.InsertBefore(list.Size() + 1, "end");
  EXPECT_EQ(Joined(list), "start|0|a|b|c|end|");
  EXPECT_EQ(list.Locate("b"), 4);
  EXPECT_EQ(list.Locate("b", 5), 0);
  list.Append(list);
  EXPECT_EQ(list.Size(), 12);
  EXPECT_EQ(list.Locate("b", 5), 10);
  list.Append(list[1]);  // an element of its own
  EXPECT_EQ(list[13], "start");
}

TEST(VorListValVorString, SortIsStableAndSurvivesABadComparison) {
  VorListValVorString list = ListOf("d2 a1 d1 c b a2");
  list.QuickSort([](VorString* left, VorString* right) { return (*left)[0] - (*right)[0]; });
  EXPECT_EQ(Joined(list), "a1|a2|b|c|d2|d1|");
  VorListValVorString many;
  for (int i = 0; i < 1000; ++i) many.Append(std::to_string(i));
  many.QuickSort([](VorString*, VorString*) {
    static unsigned calls = 0;
    return ++calls % 3 == 0 ? -1 : 1;
  });
  many.QuickSort(CompareTAStrings);
  EXPECT_EQ(many.Size(), 1000);
  for (int i = 2; i <= many.Size(); ++i) ASSERT_TRUE(many[i - 1] < many[i]);  // nothing lost
}

TEST(ListDeathTest, PositionOutsideEndsTheProcess) {
  VorListValVorString list = ListOf("a");
  EXPECT_DEATH(list[0], "List position 0 is outside 1..1");
  EXPECT_DEATH(VorListPtr<int>()[1], "List position 1 is outside 1..0");
  EXPECT_DEATH(VorRawCollPV(3).RemovePosition(1), "List position 1 is outside 1..0");
}
