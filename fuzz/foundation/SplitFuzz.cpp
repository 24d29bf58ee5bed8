#include <stdlib.h>

#include <algorithm>

#include "base/VorListValVorString.h"
#include "containers/TAIndex.h"
#include "foundation/Naive.h"
#include "foundation/TextUtilities.h"

namespace {

void Expect(bool condition) {
  if (!condition) abort();
}

void ExpectFields(const VorListValVorString& got, const naive::Fields& want) {
  Expect(static_cast<std::size_t>(got.Size()) == want.size());
  for (int i = 1; i <= got.Size(); ++i) {
    Expect(got[i].View() == want[static_cast<std::size_t>(i - 1)]);
  }
}

void ExpectKeys(const TAIndex& got, naive::Fields want) {
  for (std::string& field : want) field = field.c_str();  // an index ends its keys at a NUL
  std::sort(want.begin(), want.end());
  want.erase(std::unique(want.begin(), want.end()), want.end());
  Expect(std::equal(got.keys, got.keys + got.count, want.begin(), want.end()));
}

}  // namespace

// Input: a byte for the count, the separator up to a newline, the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int count = data[0] % 16 - 2;
  const naive::Fields parts = naive::Parts(data + 1, size - 1, 2);
  if (parts[0].empty()) return 0;
  const VorString separator(parts[0]);
  const VorString text(parts[1]);

  VorListValVorString list;
  TAIndex index;
  naive::Fields want = naive::Split(parts[1], parts[0]);
  Expect(Split(text, list, separator) == static_cast<int>(want.size()));
  ExpectFields(list, want);
  Expect(Split(text, index, separator) == index.count);
  ExpectKeys(index, want);

  want = naive::Split(parts[1], parts[0], count);
  Expect(Split(text, list, separator, count) == static_cast<int>(want.size()));
  ExpectFields(list, want);
  Expect(Split(text, index, separator, count) == index.count);
  ExpectKeys(index, want);

  want = naive::Split(parts[1], " ", count);
  while (static_cast<int>(want.size()) < count) want.emplace_back();
  Expect(Split(text, list, count) == count);
  ExpectFields(list, want);
  return 0;
}
