#include "foundation/TextUtilities.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

#include "filenames/TAFileName.h"
#include "foundation/Lists.h"

TEST(Split, DropsEmptyFields) {
  const struct {
    const char* text;
    const char* separator;
    const char* want;
  } rows[] = {
      {"  a  b ", " ", "a|b|"},
      {"a, b", ", ", "a|b|"},
      {"a,b", ", ", "a,b|"},
      {"a\tb", " ", "a\tb|"},
      {"", " ", ""},
      {"   ", " ", ""},
      {"::", "::", ""},
      {"x:::y", "::", "x|:y|"},
      {"a b", "", "a b|"},
  };
  VorListValVorString fields;
  for (const auto& row : rows) {
    const int count = Split(row.text, fields, row.separator);
    EXPECT_EQ(count, fields.Size());
    EXPECT_EQ(Joined(fields), row.want) << row.text << " at " << row.separator;
  }
}

TEST(Split, UpToCountKeepsTheRestWhole) {
  const struct {
    const char* text;
    const char* separator;
    int count;
    const char* want;
  } rows[] = {
      {"a,,b,c", ",", 3, "a|b,c|"}, {"x::y", "::", 2, "x|:y|"},
      {"x:::y", "::", 9, "x|:y|"},  {"a,b,c", ",", 1, "a,b,c|"},
      {"a,b,c", ",", -1, "a,b,c|"}, {",a,b", ",", 2, "a,b|"},
      {"a,b,", ",", 3, "a|b|"},     {"", ",", 3, ""},
  };
  VorListValVorString fields;
  for (const auto& row : rows) {
    const int count = Split(row.text, fields, row.separator, row.count);
    EXPECT_EQ(count, fields.Size());
    EXPECT_EQ(Joined(fields), row.want) << row.text << " at " << row.separator << row.count;
  }
}

TEST(Split, PadsToCount) {
  VorListValVorString fields;
  EXPECT_EQ(Split("a b", fields, 4), 4);
  EXPECT_EQ(Joined(fields), "a|b|||");
  EXPECT_EQ(Split("a b c d", fields, 2), 2);
  EXPECT_EQ(Joined(fields), "a|b c d|");
  EXPECT_EQ(Split("a", fields, 0), 0);  // the count, not the size
  EXPECT_EQ(Joined(fields), "a|");
}

TEST(Split, TakesTextAndSeparatorOfItsOwnList) {
  VorListValVorString fields;
  fields.Append("a b c of some length that is not kept inside");
  fields.Append(" ");
  Split(fields[1], fields, fields[2], 3);
  EXPECT_EQ(Joined(fields), "a|b|c of some length that is not kept inside|");
  Split(fields[3], fields);
  EXPECT_EQ(Split(fields[9], fields, 1), 1);
  EXPECT_EQ(Joined(fields), "inside|");
}

TEST(Split, IntoAnIndexKeepsEachFieldOnceAndSorted) {
  TAIndex index;
  index.Append("old", nullptr);
  EXPECT_EQ(Split("c a  b a", index), 3);
  EXPECT_EQ(Joined(index), "a|b|c|");
  EXPECT_EQ(Split("x::y::x", index, "::"), 2);
  EXPECT_EQ(Joined(index), "x|y|");
  EXPECT_EQ(Split("b,,a,c", index, ",", 3), 2);
  EXPECT_EQ(Joined(index), "a,c|b|");
  EXPECT_EQ(Split("b a", index, 1000), 1000);  // one empty text, however many are wanted
  EXPECT_EQ(Joined(index), "|a|b|");
}

TEST(ToLine, JoinsInOrder) {
  VorString line("kept");
  EXPECT_EQ(ToLine(VorListValVorString(), line, "-"), 0);
  EXPECT_EQ(line, "kept");
  VorListValVorString words = ListOf("a b c");
  ToLine(words, line, "--");
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
  const struct {
    const char* key;
    const char* sorted;
    int want;
  } rows[] = {
      {"/a/b/c", "/a/ /x/", 1}, {"/a/", "/a/", 1},       {"/a", "/a/", 0},
      {"/a/b", "", 0},          {"ab", "a ab", 1},        // the lower of two
      {"c1", "a b c d e", 3},   {"ax", "a aa ab ac", 0},  // the bisection leaves "a" behind
  };
  for (const auto& row : rows) {
    EXPECT_EQ(SearchInStringList(row.key, ListOf(row.sorted)), row.want) << row.key;
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
  const struct {
    const char* text;
    const char* pattern;
    int limit;
    int want;  // 0-based; -1 for null
  } rows[] = {
      {"abcdef", "cd", 10, 2},  {"abcdef", "def", 6, 3},
      {"abcdef", "def", 5, -1}, {"abc\ndef", "def", 9, -1},
      {"\nabc", "abc", 9, -1},  {"a\nb", "a\nb", 9, -1},
      {"aaab", "aab", 9, -1},   {"aaaab", "aab", 9, 2},
      {"abc", "a", 0, -1},      {"", "", 9, 0},
      {"a", "", 9, -1},         {"", "a", 9, -1},
  };
  for (const auto& row : rows) {
    const char* found = Q_strstr(row.text, row.pattern, row.limit);
    EXPECT_EQ(found == nullptr ? -1 : found - row.text, row.want) << row.text << row.limit;
  }
  EXPECT_EQ(Q_strstr(nullptr, "a", 1), nullptr);
  EXPECT_EQ(Q_strstr("a", nullptr, 1), nullptr);
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

TEST(CompareTAStrings, OrdersByUnsignedBytes) {
  VorListValVorString list = ListOf("b \xe9 B a");
  list.QuickSort(CompareTAStrings);
  EXPECT_EQ(Joined(list), "B|a|b|\xe9|");
  TAFileName null, low("/a"), high("/b/../b");
  EXPECT_LT(CompareTAStrings(&null, &low), 0);
  EXPECT_GT(CompareTAStrings(&high, &low), 0);
}
