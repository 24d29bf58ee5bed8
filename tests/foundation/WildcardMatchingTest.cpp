#include "foundation/WildcardMatching.h"

#include <gtest/gtest.h>

#include <string>

TEST(TestMatch, PiecesBetweenStars) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, std::string_view> matches[] = {
      {"", "*"},         {"abc", "*"},       {"abc", "abc"},
      {"\xe9", "\xe9*"}, {"", ""},           {"abc", "a*c"},
      {"abc", "*b*"},    {"ab\0cd"sv, "a*"}, {"**", "**"},
      {"abc", "a*b*c"},  {".cpp", "*.cpp"},  {"ab", "ab\0cd"sv},  // a NUL ends the comparisons only
      {"ab", "ab*b"},    {"aXbXc", "a**c"},  {"ab", "*ab*b*"},
      {"abXab", "ab"}};  // pieces may overlap
  for (const auto& [text, pattern] : matches) {
    EXPECT_EQ(TestMatch(VorString(text), VorString(pattern)), 1) << text << " " << pattern;
  }
  const std::pair<std::string_view, std::string_view> others[] = {
      {"abc", ""},         {"abc", "a*b"},     {"abc", "b*"},       {"abc", "*c*b*"},
      {"cpp", "*.cpp"},    {"abc", "a?c"},     {"a.c", "a[.]c"},    {"a*c", "a\\*c"},
      {"ab", "*b*ab"},  // pieces start in order
      {"abX", "ab"},       {"abc", "**"},      {"", "**"},          {"A", "a"},
      {"ab\0cd"sv, "*cd"}, {"abc", "ab\0*"sv}, {"abcde", "*\0cd"sv}};
  for (const auto& [text, pattern] : others) {
    EXPECT_EQ(TestMatch(VorString(text), VorString(pattern)), 0) << text << " " << pattern;
  }
}

TEST(TestMatch, LongPiecesThatAlmostMatchStayCheap) {
  const std::string many(1 << 20, 'a'), piece = std::string(1 << 18, 'a') + 'b';
  EXPECT_EQ(TestMatch(VorString(many), VorString("*" + piece + "*")), 0);
}

TEST(TestMatchNoCase, FoldsAsciiLettersOfBothSides) {
  EXPECT_EQ(TestMatchNoCase("README.txt", "R*m*.TXT"), 1);
  EXPECT_EQ(TestMatchNoCase("", "*"), 1);
  EXPECT_EQ(TestMatchNoCase("\xe9", "\xc9"), 0);
}
