#include <benchmark/benchmark.h>

#include <atomic>

#include "perfo/TAPerfo.h"

namespace {

void Count(benchmark::State& state) {
  TAPerfo counter;
  for (auto _ : state) counter.Count(1);
}

void AtomicAdd(benchmark::State& state) {
  std::atomic<int> counter{0};
  for (auto _ : state) benchmark::DoNotOptimize(counter.fetch_add(1));
}

BENCHMARK(Count)->Name("BM_Count/ours")->Arg(1);
BENCHMARK(AtomicAdd)->Name("BM_Count/atomic_add")->Arg(1);

}  // namespace
