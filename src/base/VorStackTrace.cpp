#include "base/VorStackTrace.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <stdlib.h>

#include <cstdint>
#include <memory>

namespace {

struct FreeDeleter {
  void operator()(char* text) const { free(text); }
};

void PrintFrame(FILE* stream, int number, void* address) {
  Dl_info info = {};
  const bool known = dladdr(address, &info) != 0;
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
  const std::unique_ptr<char, FreeDeleter> readable(
      abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status));
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

// Kept out of line, so that exactly one frame, its own, has to be dropped.
__attribute__((noinline)) void VorStackTrace::GetTrace() {
  void* frames[kMaxFrames + 1];
  const int count = backtrace(frames, kMaxFrames + 1);
  _count = count > 0 ? count - 1 : 0;
  for (int i = 0; i < _count; ++i) _frames[i] = frames[i + 1];
}
