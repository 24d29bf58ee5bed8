#include <stdlib.h>

#include "foundation/Naive.h"
#include "regex/NaiveFilter.h"
#include "regex/TAUnicodeRegularExpression.h"

namespace {

constexpr std::size_t kMostBytes = 512;  // of a filter or a text
constexpr int kSteps = 20000;            // what the judge may take to an answer

// Filters with a "." may never return, by intention.
bool IsEndless(const std::string& filter) {
  return filter.find('.') != std::string::npos;
}

void Judge(const std::string& filter, const std::string& subject) {
  if (IsEndless(filter)) return;
  TAUnicodeRegularExpression expression(filter.c_str());
  const int found = expression.CheckFromFilter(subject.c_str());
  if (expression.CheckFromFilter(subject.c_str()) != found) abort();  // from the cache
  const int expected = naive::Check(filter, subject, kSteps);
  if (expected != -1 && expected != found) abort();
}

// Any bytes: only has to end, and to end the same without the cache.
void Match(const std::string& filter, const std::string& subject) {
  if (IsEndless(filter)) return;
  TAUnicodeRegularExpression expression(filter.c_str());
  const int found = expression.CheckFromFilter(subject.c_str());
  TAUnicodeRegularExpression other("x");
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
