#include <stdlib.h>
#include <string.h>

#include <cstddef>
#include <cstdint>

#include "socket/SocketBytes.h"

namespace {

void Expect(bool condition) {
  if (!condition) abort();
}

// The documented rule: a sum of digits, negative if any of them has the mark.
int NaiveSize(const unsigned char* header) {
  int sum = 0, power = 1;
  bool isNegative = false;
  for (int k = 0; k < 4; ++k, power *= 64) {
    const int digit = header[k] - 32;
    sum += digit * power;
    if ((static_cast<unsigned>(digit) & 64u) != 0) isNegative = true;
  }
  return isNegative ? -sum : sum;
}

}  // namespace

// Input: four bytes, which are decoded as a header and encoded as a size.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  unsigned char header[4];
  if (size < sizeof header) return 0;
  memcpy(header, data, sizeof header);
  Expect(GetSize(header) == NaiveSize(header));

  std::int32_t value;
  memcpy(&value, data, sizeof value);
  SetSize(header, value);
  Expect(value >= 0 ? GetSize(header) == (value & 0xFFFFFF) : GetSize(header) < 0);
  for (const unsigned char byte : header) Expect(byte >= 32 && byte < 160);
  return 0;
}
