#include "base/VorString.h"

#include <gtest/gtest.h>

#include <sstream>

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
  const struct {
    const char* text;
    const char* part;
    int start;
    int want;
  } rows[] = {
      {"abcabc", "bc", 0, 1}, {"abcabc", "bc", 2, 4}, {"abcabc", "bc", 5, -1}, {"abc", "", 1, 1},
      {"abc", "", 4, -1},     {"abc", "abc", -7, 0},  {"", "a", 0, -1},        {"abc", "c", 99, -1},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(VorString(row.text).FindPosition(row.part, row.start), row.want)
        << row.text << " " << row.part << " " << row.start;
  }
}

TEST(VorString, ClipsPositionsAndCounts) {
  EXPECT_EQ(VorString("abcdef").SubString(4, 99), "ef");
  EXPECT_EQ(VorString("abcdef").SubString(6, 1), "");
  const struct {
    int start, count;
    const char* want;
  } removals[] = {{1, 2, "adef"},        {-2, 3, "bcdef"}, {4, 99, "abcd"},
                  {2, 2147483647, "ab"}, {6, 1, "abcdef"}, {2, -1, "abcdef"}};
  for (const auto& row : removals) {
    VorString text("abcdef");
    text.Remove(row.start, row.count);
    EXPECT_EQ(text, row.want) << row.start << " " << row.count;
  }
  const VorString text("ab");
  EXPECT_EQ(text[1u], 'b');
  EXPECT_EQ(text[2], '\0');
  EXPECT_EQ(text[-1L], '\0');
}

TEST(VorString, ReplacesFirstOccurrenceOnly) {
  VorString text("a.b.c");
  text.ReplaceSubString(".", "..");
  text.ReplaceSubString("", "x");
  text.ReplaceSubString("z", "x");
  EXPECT_EQ(text, "a..b.c");
}

TEST(VorString, UpperCasesAsciiOnly) {
  VorString text("a\xe9z{Z");
  text.ToUpper();
  EXPECT_EQ(text, "A\xe9Z{Z");
}
