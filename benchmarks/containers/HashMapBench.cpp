#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "containers/Keys.h"
#include "containers/VorHashSCMap.h"
#include "containers/VorStringPool.h"

// The hash map beside two others on path-like keys.  The peers are searched for texts that exist
// already, so they need no copy, and they know the length of a key, which VorHashSCMap has to
// determine.

namespace {

struct Ours {
  void Insert(const std::string& key) { map.insert(key.c_str(), this); }
  bool Has(const std::string& key) {
    void* value = nullptr;
    return map.search(key.c_str(), &value) != 0;
  }

  VorHashSCMap map{nullptr};
};

struct Pooled {
  void Insert(const std::string& key) { map.insert(key.c_str(), this); }
  bool Has(const std::string& key) {
    void* value = nullptr;
    return map.search(key.c_str(), &value) != 0;
  }

  VorStringPool pool;
  VorHashSCMap map{&pool};
};

template <typename Map>
struct Peer {
  void Insert(const std::string& key) { map.emplace(key, this); }
  bool Has(const std::string& key) { return map.find(key) != map.end(); }

  Map map;
};

using UnorderedMap = Peer<std::unordered_map<std::string, void*>>;
using FlatHashMap = Peer<absl::flat_hash_map<std::string, void*>>;

std::vector<std::string> ShuffledPaths(int count) {
  std::vector<std::string> keys = Paths(count, ".cpp");
  Shuffle(keys);
  return keys;
}

template <typename Map>
void Insert(benchmark::State& state) {
  const std::vector<std::string> keys = ShuffledPaths(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    auto map = std::make_unique<Map>();
    for (const std::string& key : keys) map->Insert(key);
    benchmark::DoNotOptimize(map);
    state.PauseTiming();
    map.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Map, bool hit>
void LookUp(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  Map map;
  for (const std::string& key : ShuffledPaths(count)) map.Insert(key);
  const std::vector<std::string> draws = Draws(Paths(count, hit ? ".cpp" : ".hpp"));
  for (auto _ : state) {
    std::size_t found = 0;
    for (const std::string& key : draws) found += map.Has(key);
    benchmark::DoNotOptimize(found);
    if (found != (hit ? draws.size() : 0)) state.SkipWithError("wrong answer");
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws.size()));
}

template <typename Map>
void RegisterMap(const std::string& name) {
  const auto add = [&name](const char* operation, void (*run)(benchmark::State&)) {
    auto* benchmark = benchmark::RegisterBenchmark((operation + name).c_str(), run);
    for (const int size : {1000, 100000, 1000000}) benchmark->Arg(size);
  };
  add("BM_MapInsert/", Insert<Map>);
  add("BM_MapHit/", LookUp<Map, true>);
  add("BM_MapMiss/", LookUp<Map, false>);
}

const bool kRegistered = [] {
  RegisterMap<Ours>("ours");
  RegisterMap<Pooled>("ours_pooled");
  RegisterMap<FlatHashMap>("absl_flat");
  RegisterMap<UnorderedMap>("std_unordered");
  return true;
}();

}  // namespace
