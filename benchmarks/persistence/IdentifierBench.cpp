// Identifiers: ours and libuuid's, whose random ones ask the system for each.

#include <benchmark/benchmark.h>
#include <uuid/uuid.h>

#include "persistence/TAUUIDGenerator.h"

namespace {

void Ours(benchmark::State& state) {
  TAUUIDGenerator generator;
  for (auto _ : state) benchmark::DoNotOptimize(generator.Get());
  state.SetItemsProcessed(state.iterations());
}

// As text, as ours are.
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

BENCHMARK(Ours)->Name("BM_Identifier/ours")->Arg(1);
BENCHMARK(Libuuid)->Name("BM_Identifier/uuid_text")->Arg(1);
BENCHMARK(LibuuidBinary)->Name("BM_Identifier/uuid_generate")->Arg(1);

}  // namespace
