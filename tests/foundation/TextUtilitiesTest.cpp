#include "foundation/TextUtilities.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <tuple>

#include "foundation/Lists.h"

namespace {

template <typename List, typename How>
concept CanSplit = requires(const VorString& text, List& list, How how) {
  Split(text, list, how);
};

static_assert(CanSplit<TAIndex, const char*>);
static_assert(!CanSplit<VorListValVorString, char>);  // would be a count
static_assert(!CanSplit<TAIndex, char>);

// Splits the text into the list; returns the result, then the fields.
template <typename List, typename... How>
std::string Fields(List& list, const char* text, How... how) {
  const int result = Split(text, list, how...);
  return std::to_string(result) + ": " + Joined(list);
}

}  // namespace

TEST(Split, DropsEmptyFieldsAndUpToACountKeepsTheRestWhole) {
  const std::tuple<const char*, const char*, int, const char*> rows[] = {
      // 99: without a count
      {"  a  b ", " ", 99, "2: a|b|"}, {"a, b", ", ", 99, "2: a|b|"},  {"", " ", 99, "0: "},
      {"x:::y", "::", 99, "2: x|:y|"}, {"a,b", ", ", 99, "1: a,b|"},   {"::", "::", 99, "0: "},
      {"a\tb", " ", 99, "1: a\tb|"},   {"a b", "", 99, "1: a b|"},     {"", ",", 3, "0: "},
      {"a,,b,c", ",", 3, "2: a|b,c|"}, {"x::y", "::", 2, "2: x|:y|"},  {"a,b,", ",", 3, "2: a|b|"},
      {"x:::y", "::", 9, "2: x|:y|"},  {"a,b,c", ",", 1, "1: a,b,c|"}, {",a,b", ",", 2, "1: a,b|"},
      {"a,b,c", ",", -1, "1: a,b,c|"}};
  VorListValVorString list;
  for (const auto& [text, separator, count, want] : rows) {
    EXPECT_EQ(count == 99 ? Fields(list, text, separator) : Fields(list, text, separator, count),
              want)
        << text << " at " << separator << count;
  }
  EXPECT_EQ(Fields(list, "a b", 4), "4: a|b|||");
  EXPECT_EQ(Fields(list, "a b c d", 2), "2: a|b c d|");
  EXPECT_EQ(Fields(list, "a", 0), "0: a|");  // the count, not the size
}

TEST(Split, TakesTextAndSeparatorOfItsOwnList) {
  VorListValVorString fields;
  for (const char* text : {"a b c of some length that is not kept inside", " "})
    fields.Append(text);
  Split(fields[1], fields, fields[2], 3);
  EXPECT_EQ(Joined(fields), "a|b|c of some length that is not kept inside|");
  Split(fields[3], fields);
  EXPECT_EQ(Split(fields[9], fields, 1), 1);
  EXPECT_EQ(Joined(fields), "inside|");
}

TEST(Split, IntoAnIndexKeepsEachFieldOnceAndSorted) {
  TAIndex index;
  index.Append("old", nullptr);
  EXPECT_EQ(Fields(index, "c a  b a"), "3: a|b|c|");
  EXPECT_EQ(Fields(index, "x::y::x", "::"), "2: x|y|");
  EXPECT_EQ(Fields(index, "b,,a,c", ",", 3), "2: a,c|b|");
  EXPECT_EQ(Fields(index, "b a", 1000), "1000: |a|b|");  // one empty text, however many are wanted
}

TEST(ToLine, JoinsInOrder) {
  VorListValVorString words = ListOf("a b c");
  VorString line;
  ToLine(words, line, "--");
  EXPECT_EQ(ToLine(VorListValVorString(), line, "-"), 0);
  EXPECT_EQ(line, "a--b--c");
  ToLine(words, line);
  EXPECT_EQ(line, "a b c");
  ToLine(words, words[2], words[2]);
  EXPECT_EQ(words[2], "abbbc");
}

TEST(IsComment, SkipsBlanksOnly) {
  for (const char* line : {"", "   ", "#", "   # x"}) EXPECT_EQ(IsComment(line), 1) << line;
  for (const char* line : {"\t# x", " x #"}) EXPECT_EQ(IsComment(VorString(line)), 0) << line;
}

TEST(SearchInStringList, FindsAnElementThatTheKeyBeginsWith) {
  const std::tuple<const char*, const char*, int> rows[] = {
      {"/a/b/c", "/a/ /x/", 1}, {"/a/", "/a/", 1},      {"/a", "/a/", 0},
      {"/a/b", "", 0},          {"ab", "a ab", 1},         // the lower of two
      {"c1", "a b c d e", 3},   {"ax", "a aa ab ac", 0}};  // the bisection skips "a"
  for (const auto& [key, sorted, want] : rows) {
    EXPECT_EQ(SearchInStringList(key, ListOf(sorted)), want) << key;
  }
  EXPECT_EQ(rSearchInStringList("a", ListOf("a b c"), 2, 3), 0);
}

TEST(InsertInList, KeepsTheListSortedAndUnique) {
  std::mt19937 random(7);
  VorListValVorString list;
  std::set<std::string> values;
  for (int i = 0; i < 300; ++i) {
    const std::string value(1, static_cast<char>(1 + random() % 255));
    InsertInList(VorString(value), list);
    values.insert(value);
  }
  std::string want;
  for (const std::string& value : values) want += value + "|";
  EXPECT_EQ(Joined(list), want);
}

TEST(QStrstr, SearchesTheFirstLineUpToTheLimit) {
  const std::tuple<const char*, const char*, int, int> rows[] = {
      // the last 0-based; -1 for null
      {"abcdef", "cd", 10, 2},  {"abcdef", "def", 6, 3},
      {"abcdef", "def", 5, -1}, {"abc\ndef", "def", 9, -1},
      {"\nabc", "abc", 9, -1},  {"a\nb", "a\nb", 9, -1},
      {"aaab", "aab", 9, -1},   {"aaaab", "aab", 9, 2},
      {"abc", "a", 0, -1},      {"", "", 9, 0},
      {"a", "", 9, -1},         {"", "a", 9, -1},
      {nullptr, "a", 9, -1},    {"a", nullptr, 9, -1}};
  for (const auto& [text, pattern, limit, want] : rows) {
    const char* found = Q_strstr(text, pattern, limit);
    EXPECT_EQ(found == nullptr ? -1 : found - text, want) << found << limit;
  }
}

TEST(SubstituteEntities, EqualsTheRepeatedReplacements) {
  EXPECT_EQ(substituteEntities("a<b & \"c\" 'd'>"), "a&lt;b &amp; &quot;c&quot; &apos;d&apos;&gt;");
  const auto slowly = [](VorString text) {
    const char* const passes[][2] = {{"&", "toreplace"}, {"toreplace", "&amp;"}, {"<", "&lt;"},
                                     {">", "&gt;"},      {"\"", "&quot;"},       {"'", "&apos;"}};
    for (const auto& pass : passes) {
      while (text.FindPosition(pass[0]) >= 0) text.ReplaceSubString(pass[0], pass[1]);
    }
    return text;
  };
  const char* const parts[] = {"&",    "<",     ">",       "\"", "'", "to",
                               "tore", "place", "replace", "t",  "e", "toreplace"};
  std::mt19937 random(1);
  for (int round = 0; round < 5000; ++round) {
    VorString text;
    for (auto i = random() % 12; i > 0; --i) text += parts[random() % std::size(parts)];
    EXPECT_EQ(substituteEntities(text), slowly(text)) << text;
  }
}
