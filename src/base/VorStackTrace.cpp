#include "base/VorStackTrace.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <stdlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/OwnedText.h"

namespace {

void PrintFrame(FILE* stream, int number, void* address) {
  Dl_info info = {};
  // If the call never returns, the return address may be the first byte after the function.
  const bool known = dladdr(static_cast<char*>(address) - 1, &info) != 0;
  const char* file = known && info.dli_fname != nullptr ? info.dli_fname : "?";
  const auto offsetFrom = [address](const void* base) {
    return static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(address) -
                                      reinterpret_cast<std::uintptr_t>(base));
  };
  if (!known || info.dli_sname == nullptr) {
    fprintf(stream, "#%-3d %p in %s+0x%lx\n", number, address, file,
            known ? offsetFrom(info.dli_fbase) : 0UL);
    return;
  }
  int status = 0;
  const vor::OwnedText readable(abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status));
  fprintf(stream, "#%-3d %p %s+0x%lx (%s)\n", number, address,
          readable != nullptr ? readable.get() : info.dli_sname, offsetFrom(info.dli_saddr), file);
}

}  // namespace

void VorBasicStackTrace::Print(FILE* stream, int skip, int limit) const {
  const int first = skip > 0 ? skip : 0;
  const int last = limit > 0 && limit < _count - first ? first + limit : _count;
  for (int i = first; i < last; ++i) PrintFrame(stream, i - first, _frames[i]);
  fflush(stream);
}

// Out of line: the trace begins at the return address of this function.  Earlier frames belong to
// this function, or to a sanitizer that intercepts backtrace; they are dropped.
__attribute__((noinline)) void VorStackTrace::GetTrace() {
  constexpr int kMaxOwn = 4;
  void* frames[kMaxFrames + kMaxOwn];
  const int count = backtrace(frames, kMaxFrames + kMaxOwn);
  void** const end = frames + count;
  void** first = std::find(frames, end, __builtin_return_address(0));
  if (first == end) first = frames + (count > 0 ? 1 : 0);
  _count = static_cast<int>(std::min<std::ptrdiff_t>(end - first, kMaxFrames));
  std::copy(first, first + _count, _frames);
}
