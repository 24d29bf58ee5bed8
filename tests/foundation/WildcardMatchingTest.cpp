#include "foundation/WildcardMatching.h"

#include <gtest/gtest.h>

#include <string>

TEST(TestMatch, PiecesBetweenStars) {
  const struct {
    const char* pattern;
    const char* text;
    int want;
  } rows[] = {
      {"*", "abc", 1},       {"*", "", 1},        {"", "", 1},         {"", "abc", 0},
      {"abc", "abc", 1},     {"a*c", "abc", 1},   {"a*b", "abc", 0},   {"*b*", "abc", 1},
      {"b*", "abc", 0},      {"*c*b*", "abc", 0}, {"a*b*c", "abc", 1}, {"*.cpp", "x.cpp", 1},
      {"*.cpp", ".cpp", 1},  {"*.cpp", "cpp", 0}, {"a**c", "aXc", 1},  {"a?c", "abc", 0},
      {"\xe9*", "\xe9t", 1}, {"a\\*c", "a*c", 0}, {"[a]*", "abc", 0},  {"l/*.so", "l/x/y.so", 1},
      {"**", "abc", 0},      {"**", "", 0},       {"**", "**", 1},     {"a*", "", 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(TestMatch(row.text, row.pattern), row.want) << row.text << " " << row.pattern;
  }
}

TEST(TestMatch, PiecesMayOverlap) {
  EXPECT_EQ(TestMatch("ab", "ab*b"), 1);
  EXPECT_EQ(TestMatch("ab", "*ab*b*"), 1);
  EXPECT_EQ(TestMatch("ab", "*b*ab"), 0);  // the order of their starts counts all the same
  EXPECT_EQ(TestMatch("abXab", "ab"), 1);
  EXPECT_EQ(TestMatch("abX", "ab"), 0);
}

TEST(TestMatch, NulEndsTheComparisonsOnly) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view pattern, text;
    int want;
  } rows[] = {
      {"*cd", "ab\0cd"sv, 0},  // the search ends at the NUL
      {"a*", "ab\0cd"sv, 1},
      {"ab\0cd"sv, "ab", 1},    // longer than the text: the end is not compared
      {"ab\0*"sv, "abc", 0},    // "ab" and not more
      {"*\0cd"sv, "abcde", 0},  // the tail is not empty
      {"*a\0x*"sv, "bab", 1},
      {"ab\0*b\0"sv, "ab\0*b\0"sv, 1},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(TestMatch(VorString(row.text), VorString(row.pattern)), row.want) << row.pattern;
  }
}

TEST(TestMatch, LongPiecesThatAlmostMatchStayCheap) {
  const std::string many(1 << 20, 'a');
  const std::string piece = std::string(1 << 18, 'a') + 'b';
  EXPECT_EQ(TestMatch(VorString(many), VorString("*" + piece + "*")), 0);
}

TEST(TestMatchNoCase, FoldsAsciiLettersOfBothSides) {
  EXPECT_EQ(TestMatchNoCase("README.TXT", "*.txt"), 1);
  EXPECT_EQ(TestMatchNoCase("readme.txt", "R*.TXT"), 1);
  EXPECT_EQ(TestMatchNoCase("", "*"), 1);
  EXPECT_EQ(TestMatchNoCase("\xe9", "\xc9"), 0);
  const std::string longName(5000, 'x');
  EXPECT_EQ(TestMatchNoCase(VorString(longName + ".C"), VorString("X*" + longName + ".c")), 1);
  EXPECT_EQ(TestMatchNoCase(VorString(longName + ".C"), VorString("*" + longName + "x.c")), 0);
}
