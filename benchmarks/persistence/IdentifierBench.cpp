// Identifiers of the library and of libuuid, whose random identifiers need a system call each.

#include <benchmark/benchmark.h>
#include <time.h>
#include <uuid/uuid.h>

#include "persistence/TAUUIDGenerator.h"

namespace {

// As many as a process can make in one second without waiting for the next.
constexpr int kIdentifiers = 50000;

// Starts with the second, so that the identifiers of earlier runs do not count.
void Ours(benchmark::State& state) {
  for (const time_t before = time(nullptr); time(nullptr) == before;) {
  }
  TAUUIDGenerator generator;
  for (auto _ : state) benchmark::DoNotOptimize(generator.Get());
  state.SetItemsProcessed(state.iterations());
}

// As text, like those of the library.
void Libuuid(benchmark::State& state) {
  for (auto _ : state) {
    uuid_t identifier;
    char text[UUID_STR_LEN];
    uuid_generate(identifier);
    uuid_unparse(identifier, text);
    benchmark::DoNotOptimize(text);
  }
  state.SetItemsProcessed(state.iterations());
}

void LibuuidBinary(benchmark::State& state) {
  for (auto _ : state) {
    uuid_t identifier;
    uuid_generate(identifier);
    benchmark::DoNotOptimize(identifier);
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(Ours)->Name("BM_Identifier/ours")->Arg(1)->Iterations(kIdentifiers);
BENCHMARK(Libuuid)->Name("BM_Identifier/uuid_text")->Arg(1)->Iterations(kIdentifiers);
BENCHMARK(LibuuidBinary)->Name("BM_Identifier/uuid_generate")->Arg(1)->Iterations(kIdentifiers);

}  // namespace
