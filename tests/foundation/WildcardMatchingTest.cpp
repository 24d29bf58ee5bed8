#include "foundation/WildcardMatching.h"

#include <gtest/gtest.h>

#include <string>

namespace {

VorString Bytes(std::string_view bytes) {
  return VorString(bytes);
}

}  // namespace

TEST(TestMatch, PiecesBetweenStars) {
  const struct {
    const char* text;
    const char* pattern;
    int want;
  } rows[] = {
      {"abc", "*", 1},
      {"", "*", 1},
      {"", "", 1},
      {"abc", "", 0},
      {"abc", "abc", 1},
      {"abc", "a*c", 1},
      {"abc", "a*b", 0},
      {"abc", "*b*", 1},
      {"abc", "b*", 0},
      {"abc", "*c*b*", 0},
      {"abc", "a*b*c", 1},
      {"x.cpp", "*.cpp", 1},
      {".cpp", "*.cpp", 1},
      {"cpp", "*.cpp", 0},
      {"aXbXc", "a**c", 1},
      {"abc", "a?c", 0},
      {"a.c", "a[.]c", 0},
      {"a*c", "a\\*c", 0},
      {"\xe9t\xe9", "\xe9*", 1},
      {"lib/x/y.so", "lib/*.so", 1},
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

TEST(TestMatch, StarsAloneMatchOnlyAsOneStar) {
  EXPECT_EQ(TestMatch("abc", "**"), 0);
  EXPECT_EQ(TestMatch("", "**"), 0);
  EXPECT_EQ(TestMatch("**", "**"), 1);
}

TEST(TestMatch, NulEndsTheComparisonsOnly) {
  using namespace std::string_view_literals;
  EXPECT_EQ(TestMatch(Bytes("ab\0cd"sv), Bytes("*cd"sv)), 0);  // the search ends at the NUL
  EXPECT_EQ(TestMatch(Bytes("ab\0cd"sv), Bytes("a*"sv)), 1);
  EXPECT_EQ(TestMatch(Bytes("ab"sv), Bytes("ab\0cd"sv)), 1);    // longer than the text
  EXPECT_EQ(TestMatch(Bytes("abc"sv), Bytes("ab\0*"sv)), 0);    // "ab" and not more
  EXPECT_EQ(TestMatch(Bytes("abcde"sv), Bytes("*\0cd"sv)), 0);  // the tail is not empty
}

TEST(TestMatch, LongPiecesThatAlmostMatchStayCheap) {
  const std::string many(1 << 20, 'a');
  const std::string piece = std::string(1 << 18, 'a') + 'b';
  EXPECT_EQ(TestMatch(VorString(many), VorString("*" + piece + "*")), 0);
}

TEST(TestMatchNoCase, FoldsAsciiLettersOfBothSides) {
  EXPECT_EQ(TestMatchNoCase("README.TXT", "*.txt"), 1);
  EXPECT_EQ(TestMatchNoCase("readme.txt", "R*.TXT"), 1);
  EXPECT_EQ(TestMatch("README.TXT", "*.txt"), 0);
  EXPECT_EQ(TestMatchNoCase("", "*"), 1);
  EXPECT_EQ(TestMatchNoCase("\xe9", "\xc9"), 0);
  const std::string longName(5000, 'x');
  EXPECT_EQ(TestMatchNoCase(VorString(longName + ".C"), VorString("X*" + longName + ".c")), 1);
  EXPECT_EQ(TestMatchNoCase(VorString(longName + ".C"), VorString("*" + longName + "x.c")), 0);
}
