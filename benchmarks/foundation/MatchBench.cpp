#include <benchmark/benchmark.h>
#include <fnmatch.h>

#include <string>
#include <vector>

#include "foundation/LogicalExpression.h"
#include "foundation/WildcardMatching.h"

namespace {

// Path-like names of a source tree.  Each pattern below matches a few of them.
const std::vector<VorString>& Names() {
  static const std::vector<VorString> names = [] {
    const char* const directories[] = {"src/", "include/", "tests/unit/", "lib/x86_64-linux-gnu/",
                                       "project/framework/module/src/"};
    const char* const stems[] = {"main", "TestDriver", "string_utilities",
                                 "VeryLongClassNameOfTool", "x"};
    const char* const ends[] = {".cpp", ".h", ".o", "_test.cpp", ".so.1.2.3", "Generated.cxx"};
    std::vector<VorString> all;
    for (const char* directory : directories) {
      for (const char* stem : stems) {
        for (const char* end : ends) all.emplace_back(std::string(directory) + stem + end);
      }
    }
    return all;
  }();
  return names;
}

struct Pattern {
  const char* name;
  const char* text;
};
constexpr Pattern kPatterns[] = {
    {"suffix", "*.cpp"},
    {"prefix", "src/*"},
    {"infix", "*Test*"},
    {"both_ends", "src/*.h"},
    {"two_stars", "tests/*/*_test.cpp"},
    {"three_stars", "*lib*.so*"},
    {"no_star", "project/framework/module/src/main.cpp"},
};

// The peer does the same with one extended pattern.  None expresses "&&": for such an expression
// the peer makes one call for each pattern, without parsing the expression.
bool Fn(const char* pattern, const VorString& name) {
  return fnmatch(pattern, name, FNM_EXTMATCH) == 0;
}
struct Selection {
  const char* name;
  const char* expression;
  bool (*peer)(const VorString& name);
};
constexpr Selection kSelections[] = {
    {"pattern", "*.cpp", [](const VorString& n) { return Fn("*.cpp", n); }},
    {"or_of_two", "*.cpp||*.h", [](const VorString& n) { return Fn("@(*.cpp|*.h)", n); }},
    {"or_of_three", "src/*||tests/*||*.so*",
     [](const VorString& n) { return Fn("@(src/*|tests/*|*.so*)", n); }},
    {"negated_group", "!(*.o||*.so*||*Generated*)",
     [](const VorString& n) { return Fn("!(*.o|*.so*|*Generated*)", n); }},
    {"and_not", "*.cpp&&!*_test*",
     [](const VorString& n) { return Fn("*.cpp", n) && !Fn("*_test*", n); }},
    {"groups", "(*.cpp||*.h)&&*Test*&&!tests/*",
     [](const VorString& n) {
       return (Fn("*.cpp", n) || Fn("*.h", n)) && Fn("*Test*", n) && !Fn("tests/*", n);
     }},
};

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

void OurMatch(benchmark::State& state, const char* text) {
  const VorString pattern(text);
  ForEachName(state, [&](const VorString& name) { return TestMatch(name, pattern); });
}
void FnMatch(benchmark::State& state, const char* pattern) {
  ForEachName(state, [&](const VorString& name) { return fnmatch(pattern, name, 0) == 0; });
}
void OurSelect(benchmark::State& state, const char* text) {
  const VorString expression(text);
  ForEachName(state, [&](const VorString& name) { return TestMatchWithLogExp(name, expression); });
}
void FnSelect(benchmark::State& state, bool (*peer)(const VorString& name)) {
  ForEachName(state, peer);
}

[[maybe_unused]] const bool registered = [] {
  using benchmark::RegisterBenchmark;
  for (const auto& [name, text] : kPatterns) {
    RegisterBenchmark((std::string("BM_TestMatch/ours/") + name).c_str(), OurMatch, text);
    RegisterBenchmark((std::string("BM_TestMatch/fnmatch/") + name).c_str(), FnMatch, text);
  }
  for (const auto& [name, expression, peer] : kSelections) {
    const std::string operation = "BM_TestMatchWithLogExp/";
    RegisterBenchmark((operation + "ours/" + name).c_str(), OurSelect, expression);
    RegisterBenchmark((operation + "fnmatch/" + name).c_str(), FnSelect, peer);
  }
  return true;
}();

}  // namespace
