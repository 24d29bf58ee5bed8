#include <stdlib.h>

#include "foundation/Naive.h"
#include "foundation/WildcardMatching.h"

namespace {

void Compare(const std::string& text, const std::string& pattern) {
  if (TestMatch(VorString(text), VorString(pattern)) != naive::TestMatch(text, pattern)) abort();

  VorString upperText(text), upperPattern(pattern);
  upperText.ToUpper();
  upperPattern.ToUpper();
  if (TestMatchNoCase(VorString(text), VorString(pattern)) !=
      naive::TestMatch(std::string(upperText.View()), std::string(upperPattern.View()))) {
    abort();
  }
}

}  // namespace

// Input: the pattern up to a newline, the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace std::string_view_literals;
  const naive::Fields parts = naive::Parts(data, size, 2);
  Compare(parts[1], parts[0]);
  Compare(naive::Folded(parts[1], "aaabA\0"sv), naive::Folded(parts[0], "a*ab*\0"sv));
  Compare(naive::Folded(parts[1], "ab"sv), naive::Folded(parts[0], "ab*"sv));
  return 0;
}
