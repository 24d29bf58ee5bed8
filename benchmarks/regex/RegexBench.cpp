#define PCRE2_CODE_UNIT_WIDTH 8
#include <benchmark/benchmark.h>
#include <pcre2.h>
#include <re2/re2.h>
#include <stdio.h>
#include <stdlib.h>

#include <regex>
#include <string>
#include <vector>

#include "regex/TAUnicodeRegularExpression.h"

namespace {

// Names and log lines as test tools filter them.  Each filter below accepts some of them.
const std::vector<std::string>& Texts() {
  static const std::vector<std::string> texts = [] {
    const char* const directories[] = {"src/", "tests/unit/", "lib/x86_64-linux-gnu/",
                                       "project/framework/module/src/"};
    const char* const stems[] = {"main", "TestDriver", "string_utilities", "run_20240131", "x"};
    const char* const ends[] = {".cpp", ".h", "_test.cpp", ".so.1.2.3", "Generated.cxx"};
    std::vector<std::string> all;
    for (const char* directory : directories) {
      for (const char* stem : stems) {
        for (const char* end : ends) all.push_back(std::string(directory) + stem + end);
      }
    }
    for (const char* stem : stems) {
      all.push_back(std::string("2024-01-31 12:00:07 [worker 12] ERROR cannot open ") + stem);
      all.push_back(std::string("2024-01-31 12:00:08 [worker 3] note: finished ") + stem);
    }
    return all;
  }();
  return texts;
}

struct Filter {
  const char* name;
  const char* ours;
  const char* pattern;  // the same for the peers
};
constexpr Filter kFilters[] = {
    {"literal", "project/framework/module/src/main[.]cpp",
     "project/framework/module/src/main[.]cpp"},
    {"prefix", "src/*", "src/.*"},
    {"suffix", "*[.]cpp", ".*[.]cpp"},
    {"infix", "*Test*", ".*Test.*"},
    {"two_runs", "tests/*/*_test*", "tests/.*/.*_test.*"},
    {"classes", "*/[:alpha:_]*[.]h", ".*/[[:alpha:]_]*[.]h"},
    {"set_run", "[a-z/_]*[.]h", "[a-z/_]*[.]h"},
    {"date", "*_[0-9]\\{8\\}[.]so*", ".*_[0-9]{8}[.]so.*"},
    {"log_line", "[0-9-]\\{10\\} [^a-z]\\{8\\} *ERROR*", "[0-9-]{10} [^a-z]{8} .*ERROR.*"},
    {"no_case", "*[Dd][Rr][Ii][Vv]er*", ".*[Dd][Rr][Ii][Vv]er.*"},
};

class Re2 {
 public:
  explicit Re2(const std::string& pattern) : _compiled(pattern) {}
  bool operator()(const std::string& text) { return RE2::FullMatch(text, _compiled); }

 private:
  RE2 _compiled;
};

// Compiled to machine code.
class Pcre2 {
 public:
  explicit Pcre2(const std::string& pattern) {
    int error = 0;
    PCRE2_SIZE where = 0;
    _code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.c_str()), PCRE2_ZERO_TERMINATED,
                          PCRE2_UTF | PCRE2_ANCHORED | PCRE2_ENDANCHORED, &error, &where, nullptr);
    if (_code == nullptr || pcre2_jit_compile(_code, PCRE2_JIT_COMPLETE) != 0) abort();
    _match = pcre2_match_data_create_from_pattern(_code, nullptr);
  }
  Pcre2(const Pcre2&) = delete;
  Pcre2& operator=(const Pcre2&) = delete;
  ~Pcre2() {
    pcre2_match_data_free(_match);
    pcre2_code_free(_code);
  }
  bool operator()(const std::string& text) {
    return pcre2_match(_code, reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), 0,
                       PCRE2_NO_UTF_CHECK, _match, nullptr) > 0;
  }

 private:
  pcre2_code* _code;
  pcre2_match_data* _match;
};

class StdRegex {
 public:
  explicit StdRegex(const std::string& pattern) : _compiled(pattern, std::regex::optimize) {}
  bool operator()(const std::string& text) { return std::regex_match(text, _compiled); }

 private:
  std::regex _compiled;
};

template <URE_type type>
class Ours {
 public:
  explicit Ours(const std::string& filter) : _compiled("*") {
    _compiled.SetFilter(filter.c_str(), type);
  }
  bool operator()(const VorUnicodeString& text) { return _compiled.CheckFromFilter(text) != 0; }

 private:
  TAUnicodeRegularExpression _compiled;
};

template <typename Engine, typename Text>
void MatchAll(benchmark::State& state, const char* pattern) {
  std::vector<Text> texts;
  for (const std::string& text : Texts()) texts.emplace_back(text.c_str());
  Engine engine(pattern);
  for (auto _ : state) {
    int found = 0;
    for (const Text& text : texts) found += engine(text);
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
}

template <typename Engine>
void Compile(benchmark::State& state, const char* pattern) {
  for (auto _ : state) benchmark::DoNotOptimize(Engine(pattern));
}
void OurCompile(benchmark::State& state, const char* pattern) {
  TAUnicodeRegularExpression filter("*");
  const VorUnicodeString text(pattern);
  for (auto _ : state) benchmark::DoNotOptimize(filter.SetFilter(text, URE_NoCache));
}

// Checks that both accept the same texts; otherwise the figures are not comparable.
void CheckThatAllAgree(const Filter& filter) {
  Ours<URE_NoCache> ours(filter.ours);
  Re2 re2(filter.pattern);
  Pcre2 pcre2(filter.pattern);
  StdRegex stdRegex(filter.pattern);
  int found = 0;
  for (const std::string& text : Texts()) {
    const bool expected = re2(text);
    found += expected;
    if (ours(text.c_str()) == expected && pcre2(text) == expected && stdRegex(text) == expected) {
      continue;
    }
    fprintf(stderr, "%s: no agreement on %s\n", filter.name, text.c_str());
    exit(1);
  }
  if (found == 0) fprintf(stderr, "%s: accepts nothing\n", filter.name);
}

[[maybe_unused]] const bool registered = [] {
  for (const Filter& filter : kFilters) {
    CheckThatAllAgree(filter);
    const auto add = [&](const std::string& what, auto run, const char* pattern) {
      benchmark::RegisterBenchmark(("BM_" + what + "/" + filter.name).c_str(), run, pattern);
    };
    add("Match/ours", MatchAll<Ours<URE_NoCache>, VorUnicodeString>, filter.ours);
    add("Match/re2", MatchAll<Re2, std::string>, filter.pattern);
    add("Match/pcre2_jit", MatchAll<Pcre2, std::string>, filter.pattern);
    add("Match/std_regex", MatchAll<StdRegex, std::string>, filter.pattern);
    // The results are in the cache; the peers have none.
    add("MatchAgain/ours", MatchAll<Ours<URE_Cache>, VorUnicodeString>, filter.ours);
    add("MatchAgain/re2", MatchAll<Re2, std::string>, filter.pattern);
    add("MatchAgain/pcre2_jit", MatchAll<Pcre2, std::string>, filter.pattern);
    add("SetFilter/ours", OurCompile, filter.ours);
    add("SetFilter/re2", Compile<Re2>, filter.pattern);
    add("SetFilter/pcre2_jit", Compile<Pcre2>, filter.pattern);
    add("SetFilter/std_regex", Compile<StdRegex>, filter.pattern);
  }
  return true;
}();

}  // namespace
