#include "foundation/LogicalExpression.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

struct Row {
  const char* expression;
  const char* text;
  int want;
};

// Each row is tried as it is and, inside of an expression of the same value, at a length that
// takes the way of long ones.
void Check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    EXPECT_EQ(TestMatchWithLogExp(row.text, row.expression), row.want) << row.expression;
    const std::string longer =
        "!(!(" + std::string(row.expression) + "))||" + std::string(600, 'x');
    EXPECT_EQ(TestMatchWithLogExp(row.text, VorString(longer)), row.want) << "in " << longer;
  }
}

std::string Repeated(const char* part, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += part;
  return text;
}

}  // namespace

TEST(TestMatchWithLogExp, CombinesPatterns) {
  constexpr const char* kText = "main.c";
  Check({
      {"*.c", kText, 1},
      {"!*.c", kText, 0},
      {"!!*.c", kText, 1},
      {"*.c||*.h", kText, 1},
      {"*.h||*.o||m*", kText, 1},
      {"*.h||*.o", kText, 0},
      {"*.c&&main*", kText, 1},
      {"*.c&&!main*", kText, 0},
      {"!(*.h)", kText, 1},
      {"!(!(*.c))", kText, 1},
      {"!(*.h)&&m*", kText, 1},
      {"!(*.h||*.o)&&m*", kText, 1},
      {"((main.c))", kText, 1},
      {"(*.c||*.h)&&m*", kText, 1},
      {"m*&&(*.h||*.o)", kText, 0},
      {"((*.c||*.h)&&(m*||n*))||x", kText, 1},
      {"*.c|m&x", kText, 0},
      {"*.c || *.h", kText, 0},  // parts of the patterns
  });
}

TEST(TestMatchWithLogExp, NotValidIsNoMatch) {
  constexpr const char* kText = "main.c";
  for (const char* expression : {"(*.c", "*.c)", "(*.c)&&(m*"}) {
    EXPECT_EQ(TestMatchWithLogExp(kText, expression), 0) << expression;
  }
  Check({{"*.c&&*.c||m*", kText, 0},
         {"(*.c||m*)&&*||*", kText, 0},
         {"!()", kText, 0},
         {"!(!())", kText, 1},  // the negation of what is not valid
         {"!(*.c&&*||m*)", kText, 1}});
}

TEST(TestMatchWithLogExp, MissingOperandsArePassedOver) {
  Check({{"&&", "a", 1},
         {"||", "a", 0},
         {"&&a&&&&", "a", 1},
         {"!(&&)", "a", 0},
         {"a|||b", "|b", 1},
         {"a||&&b", "a", 0}});
  EXPECT_EQ(TestMatchWithLogExp("", ""), 1);
  EXPECT_EQ(TestMatchWithLogExp("", "()"), 1);
}

TEST(TestMatchWithLogExp, ParenthesesAreTakenOffByTheirPlace) {
  Check({{"(a)||(b)", "a", 0},
         {"(a)||(b)", "a)||(b", 1},
         {"!!(a)", "a", 0},
         {"!!(a)", "a)", 1},
         {"!!()", "", 1},
         {"((a)||(b))||c", "a", 0},
         {"x||(a)", "a", 1}});
  EXPECT_EQ(TestMatchWithLogExp("a", "b)||(a||c)||(d"), 0);
}

TEST(TestMatchWithLogExp, MarkerBytesSeparateOperandsToo) {
  // Written as "~" here.
  const Row rows[] = {
      {"a~~b", "a~~b", 1},  // without an operator they belong to the pattern
      {"a~~b||c", "b", 1},      {"(a~~b)||c", "b)", 0},  // operands with half a pair of parentheses
      {"(a~~x~~b)||c", "x", 1}, {"a~||b", "~b", 1},      // the first two of three separate
      {"a~||b", "a~", 0},       {"b||a~||", "~", 1},
  };
  for (const Row& row : rows) {
    std::string expression(row.expression), text(row.text);
    std::replace(expression.begin(), expression.end(), '~', '\x7F');
    std::replace(text.begin(), text.end(), '~', '\x7F');
    EXPECT_EQ(TestMatchWithLogExp(text, expression), row.want) << row.expression;
  }
}

TEST(TestMatchWithLogExp, DeepNestingIsCheap) {
  constexpr int kDepth = 200000;
  const std::string open = Repeated("(", kDepth), close = Repeated(")", kDepth);
  const auto expect = [](const std::string& expression, int want) {
    EXPECT_EQ(TestMatchWithLogExp("a", expression), want) << expression.substr(0, 20) << "...";
  };
  expect(open, 0);
  expect(close + open, 0);
  expect(open + "a" + close, 1);
  expect(Repeated("!(", kDepth) + "a" + close, 1);
  expect(Repeated("!", kDepth) + "a", 1);
  expect(open + "a" + Repeated("||b)", kDepth), 1);
  expect(Repeated("!(b||", kDepth) + "a" + close, 1);
  // Marker bytes elsewhere, and half a marker at each level.
  expect(open + "c" + Repeated("\x7f||b)", kDepth) + "||\x7f\x7f" + "a", 1);
}
