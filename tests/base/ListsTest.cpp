#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/VorListPtr.h"
#include "base/VorListVal.h"
#include "base/VorListValVorString.h"
#include "base/VorRawCollPV.h"

namespace {

// A value that writes down its destruction.
struct Tracked {
  Tracked(int theTag, std::vector<int>* theLog) : tag(theTag), log(theLog) {}
  Tracked(const Tracked&) = default;
  ~Tracked() { log->push_back(tag); }
  bool operator!=(const Tracked& other) const { return tag != other.tag; }

  int tag;
  std::vector<int>* log;
};

int CompareTags(Tracked* left, Tracked* right) {
  return left->tag - right->tag;
}

VorListVal<Tracked> MakeList(std::initializer_list<int> tags, std::vector<int>* log) {
  VorListVal<Tracked> list;
  for (const int tag : tags) list.Append(Tracked(tag, log));
  return list;
}

std::string Joined(const VorListValVorString& list) {
  std::string all;
  for (int i = 1; i <= list.Size(); ++i) all += std::string(list[i].View()) + " ";
  return all;
}

VorListValVorString Strings(std::initializer_list<const char*> texts) {
  VorListValVorString list;
  for (const char* text : texts) list.Append(text);
  return list;
}

int CompareTexts(VorString* left, VorString* right) {
  return strcmp(*left, *right);
}
int ContradictsItself(VorString*, VorString*) {
  static unsigned calls = 0;
  return ++calls % 3 == 0 ? -1 : 1;
}

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
  const VorListVal<Tracked> empty;
  EXPECT_EQ(VorListVal<Tracked>(empty).Size(), 0);
  VorListVal<Tracked> list = MakeList({1, 2}, &log);
  VorListVal<Tracked>& self = list;
  list = self;
  EXPECT_EQ(list.Size(), 2);
  VorListVal<Tracked> other = MakeList({9}, &log);
  other = list;
  other[1].tag = 5;
  EXPECT_EQ(list[1].tag, 1);
  EXPECT_TRUE(other != list);
  EXPECT_TRUE(MakeList({1, 2}, &log) == MakeList({1, 2}, &log));
  EXPECT_TRUE(MakeList({1, 2}, &log) != MakeList({2, 1}, &log));
  EXPECT_TRUE(MakeList({1, 2}, &log) != MakeList({1}, &log));
}

TEST(VorListVal, AssignsAListOfItsOwnElement) {
  struct Node {
    bool operator!=(const Node&) const { return false; }
    VorListVal<Node> children;
  };
  Node root;
  root.children.Append(Node());
  root.children[1].children.Append(Node());
  root.children[1].children.Append(Node());
  root.children = root.children[1].children;
  EXPECT_EQ(root.children.Size(), 2);
}

TEST(VorListVal, SortsInPlace) {
  std::vector<int> log;
  VorListVal<Tracked> list = MakeList({5, 1, 4, 1, 3}, &log);
  const Tracked* five = &list[1];
  list.QuickSort(CompareTags);
  EXPECT_TRUE(list == MakeList({1, 1, 3, 4, 5}, &log));
  EXPECT_EQ(five, &list[5]);  // elements stay where they are in memory
}

TEST(VorListPtr, HoldsPointersItDoesNotOwn) {
  int one = 1, two = 2, three = 3;
  VorListPtr<int> list(4);
  list.Append(&one);
  list.Append(&two);
  VorListPtr<int> copy = list;
  copy[1] = &three;
  copy[2] = copy[1];
  EXPECT_EQ(*list[1], 1);
  EXPECT_EQ(copy[2], &three);
  list.RemovePosition(1);
  EXPECT_EQ(list[1], &two);
  EXPECT_EQ(copy.Size(), 2);
}

TEST(VorListValVorString, InsertsLocatesAndAppendsItself) {
  VorListValVorString list = Strings({"a", "c"});
  list.InsertAfter(1, "b");
  list.InsertBefore(1, "0");
  list.InsertAfter(0, "start");
  list.InsertBefore(list.Size() + 1, "end");
  EXPECT_EQ(Joined(list), "start 0 a b c end ");
  EXPECT_EQ(list.Locate("b"), 4);
  EXPECT_EQ(list.Locate("b", 5), 0);
  list.Append(list);
  EXPECT_EQ(list.Size(), 12);
  EXPECT_EQ(list.Locate("b", 5), 10);
  list.Append(list[1]);  // an element of its own
  EXPECT_EQ(list[13], "start");
}

TEST(VorListValVorString, SortIsStableAndSurvivesABadComparison) {
  VorListValVorString list = Strings({"d", "a", "c", "b", "a"});
  list.QuickSort(CompareTexts);
  EXPECT_EQ(Joined(list), "a a b c d ");
  VorListValVorString many;
  for (int i = 0; i < 1000; ++i) many.Append(std::to_string(i));
  many.QuickSort(ContradictsItself);
  EXPECT_EQ(many.Size(), 1000);
  many.QuickSort(CompareTexts);
  for (int i = 2; i <= many.Size(); ++i) ASSERT_TRUE(many[i - 1] < many[i]);  // nothing lost
}

TEST(ListDeathTest, PositionOutsideEndsTheProcess) {
  VorListValVorString list = Strings({"a"});
  EXPECT_DEATH(list[0], "List position 0 is outside 1..1");
  EXPECT_DEATH(VorRawCollPV(3).RemovePosition(1), "List position 1 is outside 1..0");
}
