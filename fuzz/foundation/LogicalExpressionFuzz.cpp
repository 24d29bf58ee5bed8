#include <stdlib.h>

#include "foundation/LogicalExpression.h"
#include "foundation/Naive.h"

namespace {

void Compare(const std::string& text, const std::string& expression) {
  if (TestMatchWithLogExp(VorString(text), VorString(expression)) !=
      naive::TestMatchWithLogExp(text, expression)) {
    abort();
  }
}

// Makes the expression long enough for every part of the implementation.  Its value stays the same
// if its parentheses are balanced.
std::string Lengthened(const std::string& expression) {
  return "!(!(" + expression + "))||" + std::string(600, 'x');
}

constexpr std::string_view kAlphabets[] = {"a&|!()b&", "a&()&\x7F\x7F!",
                                           "*|()|\x7F"
                                           "b|",
                                           "&()a\x7F"};
constexpr const char* kTexts[] = {"a", "", "b", "a)", "\x7F", "(a"};

}  // namespace

// Input: a byte that chooses among the variations, the text up to a newline, the expression.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096) return 0;  // the second implementation is recursive
  const std::size_t choice = data[0] % 64;
  const naive::Fields parts = naive::Parts(data + 1, size - 1, 2);
  std::string text = parts[0];
  std::string expression = parts[1];
  if (choice % 8 < std::size(kAlphabets)) {
    expression = naive::Folded(expression, kAlphabets[choice % 8]);
    text = kTexts[text.size() % std::size(kTexts)];
  }
  if (choice / 8 % 2 == 1) expression = Lengthened(expression);
  Compare(text, expression);
  return 0;
}
