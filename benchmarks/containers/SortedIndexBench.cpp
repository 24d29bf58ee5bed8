#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "containers/Keys.h"
#include "containers/TAIndex.h"
#include "containers/TAIndexI.h"

// The sorted indexes beside a balanced tree and a sorted vector, on keys that look like the paths
// of a build tree.  The peers are searched for texts that exist already, so none of them has to
// copy a key.

namespace {

enum class Order { kSorted, kRandom };

std::vector<std::string> KeysIn(Order order, int count) {
  std::vector<std::string> keys = Paths(count, ".cpp");
  if (order == Order::kRandom) Shuffle(keys);
  return keys;
}

struct Ours {
  explicit Ours(const std::vector<std::string>& keys) {
    for (const std::string& key : keys) index.Append(key.c_str(), this);
  }
  bool Has(const std::string& key) const { return index[key.c_str()] != nullptr; }

  TAIndex index;
};

struct StdMap {
  explicit StdMap(const std::vector<std::string>& keys) {
    for (const std::string& key : keys) map.emplace(key, this);
  }
  bool Has(const std::string& key) const { return map.find(key) != map.end(); }

  std::map<std::string, void*> map;
};

struct SortedVector {
  explicit SortedVector(const std::vector<std::string>& keys) {
    for (const std::string& key : keys) {
      auto place = entries.end();
      if (!entries.empty() && !(entries.back() < key)) {
        place = std::lower_bound(entries.begin(), entries.end(), key);
        if (*place == key) continue;
      }
      const auto offset = place - entries.begin();
      entries.insert(place, key);
      values.insert(values.begin() + offset, this);
    }
  }
  bool Has(const std::string& key) const {
    const auto place = std::lower_bound(entries.begin(), entries.end(), key);
    return place != entries.end() && *place == key;
  }

  std::vector<std::string> entries;
  std::vector<void*> values;
};

template <typename Container, Order order>
void Build(benchmark::State& state) {
  const std::vector<std::string> keys = KeysIn(order, static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Container container(keys);
    benchmark::DoNotOptimize(container);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Container, typename Key>
void LookUp(benchmark::State& state, const Container& container, const std::vector<Key>& pool,
            bool hit) {
  const std::vector<Key> draws = Draws(pool);
  for (const Key& key : draws) benchmark::DoNotOptimize(container.Has(key));
  for (auto _ : state) {
    std::size_t found = 0;
    for (const Key& key : draws) found += container.Has(key);
    benchmark::DoNotOptimize(found);
    if (found != (hit ? draws.size() : 0)) state.SkipWithError("wrong answer");
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws.size()));
}

// Searches a container, just built in random order, once for each of its keys.
template <typename Container>
void FirstHits(benchmark::State& state) {
  const std::vector<std::string> keys = KeysIn(Order::kRandom, static_cast<int>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    auto container = std::make_unique<Container>(keys);
    state.ResumeTiming();
    for (const std::string& key : keys) benchmark::DoNotOptimize(container->Has(key));
    state.PauseTiming();
    container.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Container, Order order, bool hit>
void LookUpText(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const Container container(KeysIn(order, count));
  LookUp(state, container, Paths(count, hit ? ".cpp" : ".h"), hit);
}

struct OursOfInts {
  explicit OursOfInts(const std::vector<int>& keys) {
    for (const int key : keys) index.Append(key, this);
  }
  bool Has(int key) const { return index[key] != nullptr; }

  TAIndexI index;
};

struct StdMapOfInts {
  explicit StdMapOfInts(const std::vector<int>& keys) {
    for (const int key : keys) map.emplace(key, this);
  }
  bool Has(int key) const { return map.find(key) != map.end(); }

  std::map<int, void*> map;
};

template <typename Container>
void LookUpInt(benchmark::State& state) {
  std::vector<int> keys;
  for (int i = 0; i < state.range(0); ++i) keys.push_back(3 * i);
  LookUp(state, Container(keys), keys, true);
}

using Sizes = std::vector<std::int64_t>;

void Register(const std::string& operation, const char* name, void (*run)(benchmark::State&),
              const Sizes& sizes) {
  auto* benchmark = benchmark::RegisterBenchmark((operation + "/" + name).c_str(), run);
  for (const std::int64_t size : sizes) benchmark->Arg(size);
}

template <Order order>
void RegisterOrder(const std::string& suffix, const Sizes& buildSizes, const Sizes& sizes) {
  Register("BM_IndexBuild" + suffix, "ours", Build<Ours, order>, buildSizes);
  Register("BM_IndexBuild" + suffix, "std_map", Build<StdMap, order>, buildSizes);
  Register("BM_IndexBuild" + suffix, "sorted_vector", Build<SortedVector, order>, buildSizes);
  Register("BM_IndexHit" + suffix, "ours", LookUpText<Ours, order, true>, sizes);
  Register("BM_IndexHit" + suffix, "std_map", LookUpText<StdMap, order, true>, sizes);
  Register("BM_IndexHit" + suffix, "sorted_vector", LookUpText<SortedVector, order, true>, sizes);
  Register("BM_IndexMiss" + suffix, "ours", LookUpText<Ours, order, false>, sizes);
  Register("BM_IndexMiss" + suffix, "std_map", LookUpText<StdMap, order, false>, sizes);
  Register("BM_IndexMiss" + suffix, "sorted_vector", LookUpText<SortedVector, order, false>, sizes);
}

const bool kRegistered = [] {
  RegisterOrder<Order::kSorted>("Sorted", {10, 1000, 100000, 1000000}, {10, 1000, 100000, 1000000});
  RegisterOrder<Order::kRandom>("Random", {10, 1000, 100000}, {10, 1000, 100000});
  Register("BM_IndexFirstHitRandom", "ours", FirstHits<Ours>, {1000, 100000});
  Register("BM_IndexFirstHitRandom", "std_map", FirstHits<StdMap>, {1000, 100000});
  Register("BM_IntIndexLookUp", "ours", LookUpInt<OursOfInts>, {10, 1000, 100000, 1000000});
  Register("BM_IntIndexLookUp", "std_map", LookUpInt<StdMapOfInts>, {10, 1000, 100000, 1000000});
  return true;
}();

}  // namespace
