#include "base/VorString.h"

#include <gtest/gtest.h>

#include <sstream>
#include <tuple>
#include <type_traits>

// As a condition a text would be true even if it is empty.
static_assert(!std::is_constructible_v<bool, VorString>);
static_assert(std::is_convertible_v<VorString, const char*>);

TEST(VorString, NullCountsAsEmpty) {
  const char* null = nullptr;
  VorString text(null);
  EXPECT_EQ(text, "");
  text = "a";
  text += null;
  EXPECT_EQ(text + null, "a");
  text = null;
  EXPECT_EQ(text.Length(), 0);
  EXPECT_EQ(text, null);
}

TEST(VorString, AssignsAndAppendsPartsOfItself) {
  VorString text("abcdef");
  text += text;
  EXPECT_EQ(text, "abcdefabcdef");
  text = text.CastToCharPtr() + 6;
  EXPECT_EQ(text, "abcdef");
  text += text.CastToCharPtr() + 4;
  EXPECT_EQ(text, "abcdefef");
}

TEST(VorString, ComparesAsStrcmpOnEitherSide) {
  const VorString low("a\x7f"), high("a\x80");
  EXPECT_TRUE(low < high);  // unsigned bytes
  EXPECT_TRUE(high > low);
  EXPECT_TRUE("b" > low);
  EXPECT_TRUE("a\x7f" == low);
  EXPECT_TRUE(low != "a");
}

TEST(VorString, KeepsEmbeddedNulBytes) {
  VorString text(std::string("a\0b", 3));
  EXPECT_EQ(text.Length(), 3);
  EXPECT_NE(text, "a");
  EXPECT_EQ(text.FindPosition("b"), 2);
  std::ostringstream out;
  out << (text + "c");
  EXPECT_EQ(out.str(), std::string("a\0bc", 4));
}

TEST(VorString, FindPosition) {
  const std::tuple<const char*, const char*, int, int> rows[] = {
      {"abcabc", "bc", 0, 1}, {"abcabc", "bc", 2, 4}, {"abcabc", "bc", 5, -1}, {"abc", "", 1, 1},
      {"abc", "", 4, -1},     {"abc", "abc", -7, 0},  {"", "a", 0, -1},        {"abc", "c", 99, -1},
  };
  for (const auto& [text, part, start, want] : rows) {
    EXPECT_EQ(VorString(text).FindPosition(part, start), want) << text << part << start;
  }
}

TEST(VorString, ClipsPositionsAndCounts) {
  EXPECT_EQ(VorString("abcdef").SubString(4, 99), "ef");
  EXPECT_EQ(VorString("abcdef").SubString(6, 1), "");
  const std::tuple<int, int, const char*> removals[] = {{1, 2, "adef"},   {-2, 3, "bcdef"},
                                                        {4, 99, "abcd"},  {2, 2147483647, "ab"},
                                                        {6, 1, "abcdef"}, {2, -1, "abcdef"}};
  for (const auto& [start, count, want] : removals) {
    VorString text("abcdef");
    text.Remove(start, count);
    EXPECT_EQ(text, want) << start << " " << count;
  }
  const VorString text("ab");
  EXPECT_EQ(text[1u], 'b');
  EXPECT_EQ(text[2], '\0');
  EXPECT_EQ(text[-1L], '\0');
}
