#include <stdlib.h>

#include "foundation/Naive.h"
#include "regex/NaiveFilter.h"
#include "regex/TAUnicodeRegularExpression.h"

namespace {

constexpr std::size_t kMostBytes = 512;  // of a filter or a text
constexpr int kSteps = 20000;            // limit of the second implementation

// Matches of filters with a "." return only under a limit of steps.
bool IsEndless(const std::string& filter) {
  return filter.find('.') != std::string::npos;
}

// More steps than any match needs: they grow with the product of both lengths.
long long MostSteps(const std::string& filter, const std::string& subject) {
  return static_cast<long long>(4 * (filter.size() + 2) * (subject.size() + 2));
}

void Judge(const std::string& filter, const std::string& subject) {
  if (IsEndless(filter)) return;
  TAUnicodeRegularExpression expression(filter.c_str());
  expression.SetStepLimit(MostSteps(filter, subject));
  const int found = expression.CheckFromFilter(subject.c_str());
  if (expression.IsStepLimitReached() != 0) abort();
  if (expression.CheckFromFilter(subject.c_str()) != found) abort();  // from the cache
  const int expected = naive::Check(filter, subject, kSteps);
  if (expected != -1 && expected != found) abort();
}

// Any bytes: the match must end, with the same result as without the cache.
void Match(const std::string& filter, const std::string& subject) {
  TAUnicodeRegularExpression expression(filter.c_str());
  expression.SetStepLimit(MostSteps(filter, subject));
  const int found = expression.CheckFromFilter(subject.c_str());
  if (expression.IsStepLimitReached() != 0 && !IsEndless(filter)) abort();
  TAUnicodeRegularExpression other("x");
  other.SetStepLimit(MostSteps(filter, subject));
  other.SetFilter(filter.c_str(), URE_NoCache);
  if (!filter.empty() && other.CheckFromFilter(subject.c_str()) != found) abort();
}

}  // namespace

// Input: the filter up to a newline, the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const naive::Fields parts = naive::Parts(data, size, 2);
  if (parts[0].size() > kMostBytes || parts[1].size() > kMostBytes) return 0;
  Match(parts[0], parts[1]);
  const std::string words[] = {"[",  "]",        "[^",    "*",       "a", "b", "-",
                               "]*", "]\\{2\\}", "\\}",   "\\{",     "3", " ", ":",
                               "^",  "[a]*",     "[^b]*", ":alpha:", "c"};
  std::string filter;
  for (char c : parts[0]) filter += words[static_cast<unsigned char>(c) % std::size(words)];
  Judge(filter, naive::Folded(parts[1], "aaabbc :-"));
  return 0;
}
