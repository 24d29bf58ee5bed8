#include "regex/TAUnicodeRegularExpression.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/time.h>

#include <random>
#include <sstream>
#include <string>

#include "regex/NaiveFilter.h"
#include "support/InProcess.h"

namespace {

std::string Dump(const TAUnicodeRegularExpression& filter) {
  testing::internal::CaptureStdout();
  filter._print();
  return testing::internal::GetCapturedStdout();
}

// "start,type,size" of each lexeme, followed by "(type first last)" for each of its operations.
std::string Compiled(const char* text) {
  std::istringstream dump(Dump(TAUnicodeRegularExpression(text)));
  std::ostringstream compiled;
  for (std::string line; std::getline(dump, line);) {
    int index = 0, start = 0, type = 0, size = 0;
    char first = 0, last = 0;
    if (sscanf(line.c_str(), " ---- %d / %d : %d : %d", &index, &start, &type, &size) == 4) {
      compiled << (index > 0 ? " " : "") << start << ',' << type << ',' << size;
    } else if (sscanf(line.c_str(), " +++ %d / %d : %c : %c", &index, &type, &first, &last) >= 3) {
      compiled << '(' << type << first;
      if (last != '\0') compiled << last;
      compiled << ')';
    }
  }
  return compiled.str();
}

std::string Repeated(const std::string& text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

int Check(const std::string& filter, const std::string& subject) {
  return TAUnicodeRegularExpression(filter.c_str()).CheckFromFilter(subject.c_str());
}

}  // namespace

TEST(UnicodeFilter, CompiledForm) {
  const struct {
    const char* filter;
    const char* lexemes;
  } rows[] = {{nullptr, "0,1,-1"},
              {"", "0,1,-1"},
              {"   ", "0,0,0"},
              {"  ab  ", "0,0,2"},
              {"a\\b]-^{", "0,0,7"},
              {"**", "0,1,-1 1,1,-1"},
              {"*.c", "0,1,-1 1,2,1 2,0,1"},
              {"[^a-c]*x", "0,4,-1(1ac)(0c) 7,0,1"},
              {"[a-]", "0,3,1(0a)(0-)"},
              {"[a^[.*]]", "0,3,1(0a)(0^)(0[)(0.)(0*) 7,0,1"},
              {"[][^]", "0,3,1 2,4,1"},
              {"[a-f:digit:_]", "0,3,1(1af)(0f)(5:)(0_)"},
              {"[:alnum::alpha::cntrl::digit::graph::lower::print::punct::space::upper:]",
               "0,3,1(2:)(3:)(4:)(5:)(6:)(7:)(8:)(9:)(10:)(11:)"},
              // Blocks that end with the filter, or that are spoilt by a name or count.
              {"[ab", "0,3,1(0a)(0b)"},
              {"x[a-", "0,0,1 1,3,1(1a)"},
              {"[", "0,3,1"},
              {"[:xdigit:]", "0,3,1 3,0,7"},
              {"[^ab:Digit:]", "0,4,1 6,0,6"},
              {"[a]\\{x\\}b", "0,3,1 6,0,3"},
              {"[a]\\{1,2\\}b", "0,3,1 6,0,5"},
              // Counts
              {"[0-9]\\{2\\}a", "0,3,2(109)(09) 10,0,1"},
              {"[0-9]\\{2\\}", "0,3,1(109)(09) 8,0,2"},
              {"[a]\\{", "0,3,1(0a)"},
              {"[a]\\{12345", "0,3,1(0a) 6,0,4"},
              {"[a]\\{\\}b", "0,3,1(0a) 7,0,1"},
              {"[a]\\{0\\}[b]*", "0,3,0(0a) 8,3,-1(0b)"},
              {"[a]\\{99999999999\\}b", "0,3,1(0a) 18,0,1"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Compiled(row.filter), row.lexemes) << (row.filter == nullptr ? "null" : row.filter);
  }
}

TEST(UnicodeFilter, DumpToTheByte) {
  TAUnicodeRegularExpression filter(" [\xc3\xa0-\xc3\xbf]x ");
  EXPECT_EQ(filter.CheckFromFilter("\xc3\xa9x"), 1);
  using namespace std::string_literals;
  EXPECT_EQ(Dump(filter),
            " ----------> Regular Expression <----------\n"
            " ----  Filter definition <[\xc3\xa0-\xc3\xbf]x> with 6 valid characters\n"
            " ----  2 lexemes detected\n"
            " ----  Lex / Start : Type  : Size  : First : Last  : Anl\n"
            " ----    0 /    0  :    3  :    1  :    0  :    1  :   -1\n"
            "     +++   0 /  1 : \xe0 : \xff\n"
            "     +++   1 /  0 : \xff : \0\n"
            " ----    1 /    5  :    0  :    1  :   -1  :   -1  :    1\n"
            " ------------------------------------------\n"s);
  filter.CheckFromFilter(nullptr);  // forgets where lexemes were tried, as any match does
  EXPECT_EQ(Dump(filter), Dump(TAUnicodeRegularExpression(filter)));
}

TEST(UnicodeFilter, Matches) {
  const struct {
    const char* filter;
    const char* accepted;  // each followed by a bar
    const char* refused;
  } rows[] = {{"*", "any| |", "|"},
              {"   ", "", "| |a|"},
              {"abc", "abc|abc  |", "abcd|ab|Abc|"},
              {"a*", "a|abc|", "ba|"},
              {"*c", "c|abc|cc|", "cb|"},
              {"a*c", "ac|abxc|", "abcd|"},
              {"*b*", "b|aXbY|", "aXY|"},
              {"**b", "ab|", "a|"},
              {"*ab*ab", "aababab|", "abb|"},
              {"a.", "", "a|"},
              {"[.]", ".|", ",|"},
              {"[a-c]*x", "x|abcx|", "adx|"},
              {"[^a]*", "bc|", "ba|"},
              {"[^0-9]\\{2\\}a", "xya|", "x1a|xa|"},
              {"[x]\\{0\\}a", "a|", "xa|"},
              {"[:digit:]", "7|", "a|"},
              {"[:xdigit:]", "", "digit:]|adigit:]|"},
              {"[^:xdigit:]", "adigit:]|", "digit:]|"},
              // Literals are compared with the blanks before a text, what is not literal is not.
              {"abc", "", " abc|"},
              {"[a][b]*", " ab|", ""},
              {"*b[c]", " xbbc|", " xbc|"},
              // A repeated block that was tried goes on with one character, not with none.
              {"*[a]*", "ba|", "b|"},
              {"[b]*[a]*", "ba|bba|", "b|"},
              // Past the end a negated block is taken by count, and nothing else is.
              {"[^x]\\{5\\}[a]*", "b|", "x|"},
              {"[^x]\\{2147483647\\}*[a]*", "b|", "x|"},
              {"[^x]\\{5\\}*a", "", "b|"},
              {"[b]\\{5\\}[a]*", "bbbbba|", "b|"},
              {"*[a]", "a|", "b|"},
              {"*[^a]x", "bx|", "b|"},
              // Beyond ASCII, and bytes that are no UTF-8.
              {"[α-ω]*", "λογος|", "λόγος|"},
              {"[:alpha:]\\{2\\}!", "é日!|", "é€!|"},
              {"[:upper:]*[^:upper:]", "É€|", "é€|"},
              {"*\xff", "a\xff|", "a\xfe|"}};
  for (const auto& row : rows) {
    TAUnicodeRegularExpression filter(row.filter);
    for (const int expected : {1, 0}) {
      std::istringstream subjects(expected == 1 ? row.accepted : row.refused);
      for (std::string subject; std::getline(subjects, subject, '|');) {
        EXPECT_EQ(filter.CheckFromFilter(subject.c_str()), expected)
            << row.filter << '~' << subject;
      }
    }
    EXPECT_EQ(filter.CheckFromFilter(nullptr), 0);
  }
}

TEST(UnicodeFilter, CharacterRules) {
  TAUnicodeRegularExpression filter("[a-f:digit:]");
  EXPECT_EQ(filter._checkCharacterRule('c', 0), 1);
  EXPECT_EQ(filter._checkCharacterRule('c', 1), 0);
  EXPECT_EQ(filter._checkCharacterRule('7', 2), 1);
  for (int op : {-1, 3, 64}) EXPECT_EQ(filter._checkCharacterRule('c', op), 0);
}

TEST(UnicodeFilter, AgreesWithTheNaiveSearch) {
  const char* const filterParts[] = {
      "*",  "a",  "b", "ab",  " ",   "[a]", "[b]*", "[^a]", "[^b]*", "[ab]\\{2\\}", "[^b]\\{3\\}",
      "[:", "a-", "]", "\\{", "\\}", "[",   "*",    "*",    "[a]*",  "[a-c]*",      "[:alpha:]*"};
  std::mt19937 random(7);
  int accepted = 0;
  for (int round = 0; round < 100000; ++round) {
    std::string filter, subject;
    for (auto parts = 1 + random() % 6; parts > 0; --parts) {
      filter += filterParts[random() % std::size(filterParts)];
    }
    for (auto length = random() % 12; length > 0; --length) subject += "aaabb "[random() % 6];
    const int expected = naive::Check(filter, subject, 1000000);
    ASSERT_EQ(Check(filter, subject), expected) << '<' << filter << "> <" << subject << '>';
    accepted += expected;
  }
  EXPECT_GT(accepted, 5000);
}

TEST(UnicodeFilter, HostileFilters) {
  const std::string text(2000, 'a');
  EXPECT_EQ(Check(Repeated("[a]*", 30) + "b", text), 0);
  EXPECT_EQ(Check("*a" + Repeated("[^b]*", 30) + "[c]", text), 0);
  EXPECT_EQ(Check(Repeated("[a]", 2000), text), 1);  // arrays grow
  EXPECT_EQ(Check("[" + Repeated("bc", 500) + "a]*", text), 1);
  EXPECT_EQ(Check("[^" + Repeated("bc", 500) + "a]*", text), 0);
}

// Only a match changes where lexemes were tried, so an answer from memory leaves the dump as it is.
TEST(UnicodeFilter, RemembersResultsByFilterAndText) {
  TAUnicodeRegularExpression filter("*b");
  const auto isRemembered = [](TAUnicodeRegularExpression& f, const VorUnicodeString& subject) {
    const std::string before = Dump(f);
    f.CheckFromFilter(subject);
    return Dump(f) == before;
  };
  EXPECT_FALSE(isRemembered(filter, "ab"));
  EXPECT_FALSE(isRemembered(filter, "abc"));
  for (URE_type type : {URE_Cache, URE_NoCache, URE_type(7)}) {
    filter.SetFilter("*c", URE_Cache);
    filter.SetFilter("*b", type);  // in any case there are results from before
    for (const char* known : {"ab", "abc"}) EXPECT_TRUE(isRemembered(filter, known)) << known;
    EXPECT_EQ(filter.CheckFromFilter("ab"), 1);
    EXPECT_EQ(filter.CheckFromFilter("abc"), 0);
  }
  VorUnicodeString withNul("ab");
  withNul.Append(VorUnicodeString(VorUnicodeChar(), 1));
  EXPECT_EQ(filter.CheckFromFilter(withNul), 0);  // though "ab" is known

  TAUnicodeRegularExpression copy(filter), blanks(" *b ");
  EXPECT_FALSE(isRemembered(copy, "ab"));
  EXPECT_TRUE((copy.SetFilter("*b", URE_Cache), isRemembered(copy, "ab")));
  copy = static_cast<const TAUnicodeRegularExpression&>(copy);
  EXPECT_TRUE(isRemembered(copy, "ab"));
  blanks.CheckFromFilter("ab");
  EXPECT_TRUE(blanks.SetFilter(" *b ", URE_Cache) == 0 && !isRemembered(blanks, "ab"));
  filter.SetFilter("*d", URE_NoCache);
  filter.CheckFromFilter("ad");
  EXPECT_TRUE(filter.SetFilter("*d", URE_NoCache) == 0 && !isRemembered(filter, "ad"));
}

TEST(UnicodeFilter, CopiesTakeTheStrippedFilter) {
  TAUnicodeRegularExpression filter(VorUnicodeString(" a*\xc3\xa9 ")), copy(filter), other("x");
  other = copy;
  EXPECT_EQ(other.GetFilter(), "a*\xc3\xa9");
  EXPECT_EQ(other.CheckFromFilter("ab\xc3\xa9"), 1);
  TAUnicodeRegularExpression blank("  ");
  EXPECT_EQ(blank.GetFilter(), "");
  EXPECT_EQ(TAUnicodeRegularExpression(blank).GetFilter(), "*");
}

TEST(UnicodeFilter, DotWithCharactersLeftNeverReturns) {
  const int result = InProcess([] {
    static volatile sig_atomic_t alarms = 0;
    signal(SIGALRM, [](int) {
      alarms = alarms + 1;
      if (alarms == 3) _exit(42);
    });
    const itimerval every = {{0, 10000}, {0, 10000}};
    setitimer(ITIMER_REAL, &every, nullptr);
    return Check("*.c", "main.c");
  });
  EXPECT_EQ(result, 42);
}
