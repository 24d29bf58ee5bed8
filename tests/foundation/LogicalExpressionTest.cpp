#include "foundation/LogicalExpression.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Repeated(const char* part, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += part;
  return text;
}

int Match(const char* text, const std::string& expression) {
  return TestMatchWithLogExp(text, VorString(expression));
}

}  // namespace

TEST(TestMatchWithLogExp, CombinesPatterns) {
  const struct {
    const char* expression;
    int want;  // for main.c
  } rows[] = {
      {"*.c", 1},
      {"!*.c", 0},
      {"!!*.c", 1},
      {"*.c||*.h", 1},
      {"*.h||*.o||m*", 1},
      {"*.h||*.o", 0},
      {"*.c&&main*", 1},
      {"*.c&&!main*", 0},
      {"!(*.h)", 1},
      {"!(*.c)", 0},
      {"!(!(*.c))", 1},
      {"!(*.h)&&m*", 1},
      {"!(*.h||*.o)&&m*", 1},
      {"(*.c||*.h)&&m*", 1},
      {"m*&&(*.h||*.o)", 0},
      {"((*.c||*.h)&&(m*||n*))||x", 1},
      {"((*.c&&*.h)||(m*&&n*))&&x", 0},
      {"((main.c))", 1},
      {"*.c|m&x", 0},     // single ones belong to the pattern
      {"*.c || *.h", 0},  // and so do blanks
      {"", 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Match("main.c", row.expression), row.want) << row.expression;
  EXPECT_EQ(Match("", ""), 1);
  EXPECT_EQ(Match("", "()"), 1);
}

TEST(TestMatchWithLogExp, NotValidIsNoMatch) {
  for (const char* expression :
       {"(*.c", "*.c)", "*.c&&*.c||m*", "(*.c||m*)&&*||*", "!()", "(*.c)&&(m*"}) {
    EXPECT_EQ(Match("main.c", expression), 0) << expression;
  }
  EXPECT_EQ(Match("main.c", "!(!())"), 1);  // the negation of what is not valid
  EXPECT_EQ(Match("main.c", "!(*.c&&*||m*)"), 1);
}

TEST(TestMatchWithLogExp, MissingOperandsArePassedOver) {
  EXPECT_EQ(Match("a", "&&"), 1);
  EXPECT_EQ(Match("a", "||"), 0);
  EXPECT_EQ(Match("a", "&&a&&&&"), 1);
  EXPECT_EQ(Match("a", "!(&&)"), 0);
  EXPECT_EQ(Match("&b", "a||&&b"), 0);
  EXPECT_EQ(Match("&b", "a&&&b"), 0);
  EXPECT_EQ(Match("|b", "a|||b"), 1);
}

TEST(TestMatchWithLogExp, ParenthesesAreTakenOffByTheirPlace) {
  EXPECT_EQ(Match("a", "(a)||(b)"), 0);
  EXPECT_EQ(Match("a)||(b", "(a)||(b)"), 1);
  EXPECT_EQ(Match("a", "!!(a)"), 0);
  EXPECT_EQ(Match("a)", "!!(a)"), 1);
  EXPECT_EQ(Match("", "!!()"), 1);
  EXPECT_EQ(Match("a", "((a)||(b))||c"), 0);
  EXPECT_EQ(Match("a", "x||(a)"), 1);
  EXPECT_EQ(Match("a", "b)||(a||c)||(d"), 0);
}

TEST(TestMatchWithLogExp, MarkerBytesSeparateOperandsToo) {
  EXPECT_EQ(Match("a\x7f\x7f"
                  "b",
                  "a\x7f\x7f"
                  "b"),
            1);  // without an operator they are a pattern
  EXPECT_EQ(Match("b",
                  "a\x7f\x7f"
                  "b||c"),
            1);
  EXPECT_EQ(Match("b)",
                  "(a\x7f\x7f"
                  "b)||c"),
            0);  // an operand with half a pair of parentheses
  EXPECT_EQ(Match("x",
                  "(a\x7f\x7fx\x7f\x7f"
                  "b)||c"),
            1);
  EXPECT_EQ(Match("\x7f"
                  "b",
                  "a\x7f||b"),
            1);  // the first two of three separate
  EXPECT_EQ(Match("a\x7f", "a\x7f||b"), 0);
  EXPECT_EQ(Match("\x7f", "b||a\x7f||"), 1);
}

TEST(TestMatchWithLogExp, DeepNestingIsCheap) {
  constexpr int kDepth = 200000;
  const std::string open = Repeated("(", kDepth), close = Repeated(")", kDepth);
  EXPECT_EQ(Match("a", open), 0);
  EXPECT_EQ(Match("a", Repeated("!(", kDepth)), 0);
  EXPECT_EQ(Match("a", close + open), 0);
  EXPECT_EQ(Match("a", open + "a" + close), 1);
  EXPECT_EQ(Match("a", Repeated("!(", kDepth) + "a" + close), 1);
  EXPECT_EQ(Match("a", Repeated("!", kDepth) + "a"), 1);
  EXPECT_EQ(Match("a", open + "a" + Repeated("||b)", kDepth)), 1);
  EXPECT_EQ(Match("a", Repeated("(b||", kDepth) + "a" + close), 1);
  EXPECT_EQ(Match("a", Repeated("!(b||", kDepth) + "a" + close), 1);
  // Marker bytes elsewhere, and half of one at each level.
  EXPECT_EQ(Match("a", open + "c" + Repeated("\x7f||b)", kDepth) + "||\x7f\x7f" + "a"), 1);
}
