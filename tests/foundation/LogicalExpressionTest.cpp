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
  for (const char* expression :
       {"*.c", "!!*.c", "*.c||*.h", "*.h||*.o||m*", "*.c&&main*", "!(*.h)", "!(!(*.c))",
        "!(*.h||*.o)&&m*", "(*.c||*.h)&&m*", "((*.c||*.h)&&(m*||n*))||x", "((main.c))", "!(!())",
        "!(*.c&&*||m*)"}) {  // the negation of what is not valid
    EXPECT_EQ(Match("main.c", expression), 1) << expression;
  }
  for (const char* expression :
       {"!*.c", "*.h||*.o", "*.c&&!main*", "!(*.c)", "m*&&(*.h||*.o)", "((*.c&&*.h)||(m*&&n*))&&x",
        "", "*.c|m&x", "*.c || *.h",  // single operators and blanks belong to the pattern
        // What follows is not valid.
        "(*.c", "*.c)", "*.c&&*.c||m*", "(*.c||m*)&&*||*", "!()", "(*.c)&&(m*"}) {
    EXPECT_EQ(Match("main.c", expression), 0) << expression;
  }
}

TEST(TestMatchWithLogExp, KeepsDocumentedQuirks) {
  // A text, '=' if it matches, '#' if not, and the expression.
  for (const std::string row :
       {"=", "=()",
        // Missing operands are passed over.
        "a=&&", "a#||", "a=&&a&&&&", "a#!(&&)", "&b#a||&&b", "&b#a&&&b", "|b=a|||b",
        // Parentheses are taken off by their place.
        "a#(a)||(b)", "a)||(b=(a)||(b)", "a#!!(a)", "a)=!!(a)", "=!!()", "a#((a)||(b))||c",
        "a=x||(a)", "a#b)||(a||c)||(d",
        // Marker bytes separate operands too, if there is an operator; of three, the first two do.
        "a\x7f\x7fz=a\x7f\x7fz", "z=a\x7f\x7fz||y", "z)#(a\x7f\x7fz)||y",
        "x=(a\x7f\x7fx\x7f\x7fz)||y", "\x7fz=a\x7f||z", "a\x7f#a\x7f||z", "\x7f=z||a\x7f||"}) {
    const std::size_t mark = row.find_first_of("=#");
    EXPECT_EQ(Match(row.substr(0, mark).c_str(), row.substr(mark + 1)), row[mark] == '=') << row;
  }
}

TEST(TestMatchWithLogExp, DeepNestingIsCheap) {
  constexpr int kDepth = 200000;
  const std::string open = Repeated("(", kDepth), close = Repeated(")", kDepth);
  for (const std::string& expression :
       {open + "a" + close, Repeated("!(", kDepth) + "a" + close, Repeated("!", kDepth) + "a",
        open + "a" + Repeated("||b)", kDepth), Repeated("(b||", kDepth) + "a" + close,
        Repeated("!(b||", kDepth) + "a" + close,
        // Marker bytes elsewhere, and half of one at each level.
        open + "c" + Repeated("\x7f||b)", kDepth) + "||\x7f\x7f" + "a"}) {
    EXPECT_EQ(Match("a", expression), 1) << expression.substr(0, 9);
  }
  for (const std::string& expression : {open, Repeated("!(", kDepth), close + open}) {
    EXPECT_EQ(Match("a", expression), 0) << expression.substr(0, 9);
  }
}
