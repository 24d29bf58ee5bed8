// Bringing path texts into normal form: TAFileName against std::filesystem::path.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "filenames/TAFileName.h"

namespace {

// Typical paths; every fourth one has steps to fold.
std::vector<std::string> MakePaths(std::size_t count) {
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i * 7919);
    paths.push_back("/home/build/workspace/framework" + number +
                    (i % 4 == 0 ? "/./module.m/../src/file" : "/module.m/src/file") + number +
                    ".cpp");
  }
  return paths;
}

void BM_NormalName_Ours(benchmark::State& state) {
  const std::vector<std::string> paths = MakePaths(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (const std::string& path : paths) {
      const TAFileName name(path.c_str());
      benchmark::DoNotOptimize(static_cast<const char*>(name));
    }
  }
}

void BM_NormalName_Filesystem(benchmark::State& state) {
  const std::vector<std::string> paths = MakePaths(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (const std::string& path : paths) {
      const std::filesystem::path name = std::filesystem::path(path).lexically_normal();
      benchmark::DoNotOptimize(name.c_str());
    }
  }
}

}  // namespace

BENCHMARK(BM_NormalName_Ours)->Name("BM_NormalName/ours")->Arg(1000);
BENCHMARK(BM_NormalName_Filesystem)->Name("BM_NormalName/fs_path")->Arg(1000);
