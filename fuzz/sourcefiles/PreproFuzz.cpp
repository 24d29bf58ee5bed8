#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sourcefiles/VorFilePrepro.h"
#include "support/NaivePrepro.h"

namespace {

void Expect(bool condition) {
  if (!condition) abort();
}

}  // namespace

// Input: a byte with the flags, the source text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static const int file = memfd_create("source", MFD_CLOEXEC);
  static const VorString path(("/proc/self/fd/" + std::to_string(file)).c_str());
  Expect(ftruncate(file, 0) == 0);
  Expect(pwrite(file, data + 1, size - 1, 0) == static_cast<ssize_t>(size - 1));

  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  VorFilePrepro prepro(path);
  for (const int flags : {data[0] % 32, ~data[0]}) {
    std::vector<char> want(size);
    const int result = NaivePrepro(text.c_str(), flags, want.data());
    char* got = nullptr;
    Expect(prepro.preprocess(flags, got) == result);
    Expect(strcmp(got, want.data()) == 0);
    free(got);
  }
  return 0;
}
