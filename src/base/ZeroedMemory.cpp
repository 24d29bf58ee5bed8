#include "base/ZeroedMemory.h"

#include <stdlib.h>
#include <sys/mman.h>

#include <cstdint>

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

}  // namespace

void* vor::AllocateZeroed(std::size_t size) {
  void* memory = calloc(size, 1);
  if (memory == nullptr || size < 2 * kLargePage) return memory;
  // Memory of this size is mostly new from the system and has no pages yet.  For memory that was in
  // use before, the advice has no effect.
  const auto start = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t from = (start + kLargePage - 1) / kLargePage * kLargePage;
  const std::uintptr_t to = (start + size) / kLargePage * kLargePage;
  madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);  // advice: may be refused
  return memory;
}
