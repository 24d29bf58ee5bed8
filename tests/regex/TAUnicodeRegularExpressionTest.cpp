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
              {"*.c", "0,1,-1 1,2,1 2,0,1"},
              {"[^a-c]*x", "0,4,-1(1ac)(0c) 7,0,1"},
              {"[a-]", "0,3,1(0a)(0-)"},
              {"[a^[.*]]", "0,3,1(0a)(0^)(0[)(0.)(0*) 7,0,1"},
              {"[][^]", "0,3,1 2,4,1"},
              {"[a-f:digit:_]", "0,3,1(1af)(0f)(5:)(0_)"},
              {"[:alnum::alpha::cntrl::digit::graph::lower::print::punct::space::upper:]",
               "0,3,1(2:)(3:)(4:)(5:)(6:)(7:)(8:)(9:)(10:)(11:)"},
              // Blocks that end with the filter, or that are spoilt by a name or count.
              {"x[a-", "0,0,1 1,3,1(1a)"},
              {"[", "0,3,1"},
              {"[:xdigit:]", "0,3,1 3,0,7"},
              {"[^ab:Digit:]", "0,4,1 6,0,6"},
              {"[a]\\{1,2\\}b", "0,3,1 6,0,5"},
              // Counts
              {"[0-9]\\{2\\}a", "0,3,2(109)(09) 10,0,1"},
              {"[0-9]\\{2\\}", "0,3,1(109)(09) 8,0,2"},
              {"[a]\\{12345", "0,3,1(0a) 6,0,4"},
              {"[a]\\{\\}b", "0,3,1(0a) 7,0,1"},
              {"[a]\\{0\\}[b]*", "0,3,0(0a) 8,3,-1(0b)"},
              {"[a]\\{99999999999\\}b", "0,3,1(0a) 18,0,1"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Compiled(row.filter), row.lexemes) << (row.filter == nullptr ? "null" : row.filter);
  }
  EXPECT_EQ(Check(Repeated("[a]", 200), std::string(200, 'a')), 1);  // arrays grow
  const TAUnicodeRegularExpression blank("  ");
  EXPECT_EQ(TAUnicodeRegularExpression(blank).GetFilter(), "*");
}

TEST(UnicodeFilter, PrintsTheExactDump) {
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

TEST(UnicodeFilter, MatchesWhatTheNaiveSearchDoesNotKnow) {
  const struct {
    const char* filter;
    const char* accepted;  // each followed by a bar
    const char* refused;
  } rows[] = {{"   ", "", "| |a|"},
              {"a.", "", "a|"},
              {"[.]", ".|", ",|"},
              // Its count is added to a position.
              {"[^x]\\{2147483647\\}*[a]*", "b|", "x|"},
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
  for (int op : {-1, 3, 64}) EXPECT_EQ(filter._checkCharacterRule('c', op), 0);
  for (const char* name :
       {"alnum", "alpha", "cntrl", "digit", "graph", "lower", "print", "punct", "space", "upper"}) {
    filter.SetFilter((std::string("![:") + name + ":]!").c_str(), URE_NoCache);
    for (char c = 1; c > 0; ++c) {
      EXPECT_EQ(filter.CheckFromFilter(std::string({'!', c, '!'}).c_str()),
                filter._checkCharacterRule(c, 0))
          << name << static_cast<int>(c);
    }
  }
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

TEST(UnicodeFilter, StepsGrowWithTheLengthOfTheText) {
  constexpr int kLength = 200000;
  const VorUnicodeString text(VorUnicodeChar('a'), kLength);
  for (const std::string& hostile :
       {Repeated("[a]*", 30) + "b", "*a" + Repeated("[^b]*", 30) + "[c]",
        std::string("*[a]\\{5000\\}b"), Repeated("[a]*[a]\\{5000\\}", 8) + "b",
        std::string("[^b]\\{70000\\}[a]*[^b]\\{60000\\}b")}) {
    TAUnicodeRegularExpression filter(hostile.c_str());
    filter.SetStepLimit(200LL * kLength);
    EXPECT_EQ(filter.CheckFromFilter(text), 0) << hostile;
    EXPECT_EQ(filter.IsStepLimitReached(), 0) << hostile;
  }
}

TEST(UnicodeFilter, StopsAtTheStepLimit) {
  TAUnicodeRegularExpression filter("*ab*"), copy("x");
  EXPECT_EQ(filter.CheckFromFilter("ab"), 1);
  filter.SetStepLimit(2);
  EXPECT_EQ(filter.CheckFromFilter("aaab"), 0);
  EXPECT_EQ(filter.IsStepLimitReached(), 1);
  EXPECT_EQ(filter.CheckFromFilter("ab"), 1);  // remembered
  EXPECT_EQ(filter.IsStepLimitReached(), 0);
  filter.SetStepLimit(1000);
  EXPECT_EQ(filter.CheckFromFilter("aaab"), 1);  // the result of the stopped match is not
  copy = filter;
  copy.SetFilter("*.c", URE_Cache);
  EXPECT_EQ(copy.CheckFromFilter("main.c"), 0);
  EXPECT_EQ(copy.IsStepLimitReached(), 1);
}

// Only a match changes where lexemes were tried, so a remembered result leaves the dump as it is.
TEST(UnicodeFilter, RemembersResultsByFilterAndText) {
  TAUnicodeRegularExpression filter("*b");
  const auto isRemembered = [](TAUnicodeRegularExpression& f, const VorUnicodeString& subject) {
    const std::string before = Dump(f);
    f.CheckFromFilter(subject);
    return Dump(f) == before;
  };
  for (const char* unknown : {"ab", "abc"}) EXPECT_FALSE(isRemembered(filter, unknown));
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

  TAUnicodeRegularExpression copy(filter);
  EXPECT_FALSE(isRemembered(copy, "ab"));
  copy = static_cast<const TAUnicodeRegularExpression&>(copy);
  EXPECT_TRUE(isRemembered(copy, "ab"));
  for (int i = 0; i < 2; ++i) {
    filter.SetFilter(" *d ", URE_Cache);  // results are kept for the text without the blanks
    EXPECT_FALSE(isRemembered(filter, "ad"));
  }
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
