#include <benchmark/benchmark.h>
#include <fnmatch.h>

#include <string>
#include <vector>

#include "foundation/LogicalExpression.h"
#include "foundation/WildcardMatching.h"

namespace {

// Path-like names of a source tree; some are met by each pattern below, most are not.
const std::vector<VorString>& Names() {
  static const std::vector<VorString> names = [] {
    const char* const folders[] = {"src/", "include/", "tests/unit/", "lib/x86_64-linux-gnu/",
                                   "project/framework/module/src/"};
    const char* const stems[] = {"main", "TestDriver", "string_utilities",
                                 "VeryLongClassNameOfTool", "x"};
    const char* const ends[] = {".cpp", ".h", ".o", "_test.cpp", ".so.1.2.3", "Generated.cxx"};
    std::vector<VorString> all;
    for (const char* folder : folders) {
      for (const char* stem : stems) {
        for (const char* end : ends) all.emplace_back(std::string(folder) + stem + end);
      }
    }
    return all;
  }();
  return names;
}

constexpr const char* kPatterns[] = {"*.cpp",
                                     "src/*",
                                     "*Test*",
                                     "src/*.h",
                                     "tests/*/*_test.cpp",
                                     "*lib*.so*",
                                     "project/framework/module/src/main.cpp"};

template <typename Test>
void ForEachName(benchmark::State& state, Test test) {
  const std::vector<VorString>& names = Names();
  for (auto _ : state) {
    int found = 0;
    for (const VorString& name : names) found += test(name);
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}

void OurMatch(benchmark::State& state) {
  const VorString pattern(kPatterns[state.range(0)]);
  state.SetLabel(pattern.CastToCharPtr());
  ForEachName(state, [&](const VorString& name) { return TestMatch(name, pattern); });
}
void FnMatch(benchmark::State& state) {
  const char* pattern = kPatterns[state.range(0)];
  ForEachName(state, [&](const VorString& name) { return fnmatch(pattern, name, 0) == 0; });
}
BENCHMARK(OurMatch)->Name("BM_TestMatch/ours")->DenseRange(0, std::size(kPatterns) - 1);
BENCHMARK(FnMatch)->Name("BM_TestMatch/fnmatch")->DenseRange(0, std::size(kPatterns) - 1);

// The peer does the same with one extended pattern.  There is none for "&&": where it occurs the
// peer is spared reading the expression and makes one call for each pattern.
bool Fn(const char* pattern, const VorString& name) {
  return fnmatch(pattern, name, FNM_EXTMATCH) == 0;
}
struct Selection {
  const char* expression;
  bool (*peer)(const VorString& name);
};
constexpr Selection kSelections[] = {
    {"*.cpp", [](const VorString& n) { return Fn("*.cpp", n); }},
    {"*.cpp||*.h", [](const VorString& n) { return Fn("@(*.cpp|*.h)", n); }},
    {"src/*||tests/*||*.so*", [](const VorString& n) { return Fn("@(src/*|tests/*|*.so*)", n); }},
    {"!(*.o||*.so*||*Generated*)",
     [](const VorString& n) { return Fn("!(*.o|*.so*|*Generated*)", n); }},
    {"*.cpp&&!*_test*", [](const VorString& n) { return Fn("*.cpp", n) && !Fn("*_test*", n); }},
    {"(*.cpp||*.h)&&*Test*&&!tests/*",
     [](const VorString& n) {
       return (Fn("*.cpp", n) || Fn("*.h", n)) && Fn("*Test*", n) && !Fn("tests/*", n);
     }},
};

void OurSelect(benchmark::State& state) {
  const VorString expression(kSelections[state.range(0)].expression);
  state.SetLabel(expression.CastToCharPtr());
  ForEachName(state, [&](const VorString& name) { return TestMatchWithLogExp(name, expression); });
}
void FnSelect(benchmark::State& state) {
  ForEachName(state, kSelections[state.range(0)].peer);
}
BENCHMARK(OurSelect)
    ->Name("BM_TestMatchWithLogExp/ours")
    ->DenseRange(0, std::size(kSelections) - 1);
BENCHMARK(FnSelect)
    ->Name("BM_TestMatchWithLogExp/fnmatch")
    ->DenseRange(0, std::size(kSelections) - 1);

}  // namespace
