// Selecting and listing files on disk, with sorted paths: the library, glob(3), find(1) and
// std::filesystem.

#include <benchmark/benchmark.h>
#include <glob.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/VorListValVorString.h"
#include "filenames/DirectoryReading.h"

namespace {

constexpr int kFiles = 100000;

// A tree of kFiles files, made at the first use and removed at the end.
class Tree {
 public:
  explicit Tree(int filesPerDirectory) {
    std::string pattern = std::filesystem::temp_directory_path() / "vor_bench_XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) abort();
    _root = pattern;
    for (int i = 0; i < kFiles; ++i) {
      const int directory = i / filesPerDirectory;
      const std::filesystem::path folder = std::filesystem::path(_root) /
                                           ("group" + std::to_string(directory % 10)) /
                                           ("module" + std::to_string(directory));
      if (i % filesPerDirectory == 0) std::filesystem::create_directories(folder);
      // Not in the order of the names.
      const std::string number = std::to_string(i * 7919LL % kFiles);
      std::ofstream(folder / ("source_file_" + number + (i % 4 == 0 ? ".h" : ".cpp")));
    }
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  ~Tree() {
    std::error_code ignored;
    std::filesystem::remove_all(_root, ignored);
  }

  const std::string& Root() const { return _root; }

 private:
  std::string _root;
};

const std::string& DeepRoot() {
  static const Tree tree(100);
  return tree.Root();
}

const std::string& FlatRoot() {
  static const Tree tree(kFiles);
  return tree.Root();
}

// The figures are comparable only if all find the same number of paths.
void CheckCount(benchmark::State& state, std::size_t count, std::size_t expected) {
  if (count != expected) state.SkipWithError("not all files were found");
}

void SelectOurs(benchmark::State& state, const std::string& pattern, std::size_t expected) {
  for (auto _ : state) {
    VorListValVorString paths;
    ReadDirectory(pattern.c_str(), paths);
    CheckCount(state, static_cast<std::size_t>(paths.Size()), expected);
  }
}

void SelectGlob(benchmark::State& state, const std::string& pattern, std::size_t expected) {
  for (auto _ : state) {
    glob_t found;
    glob(pattern.c_str(), GLOB_PERIOD, nullptr, &found);
    CheckCount(state, found.gl_pathc, expected);
    globfree(&found);
  }
}

void BM_ReadDirectory_Ours(benchmark::State& state) {
  SelectOurs(state, DeepRoot() + "/*/module*/*.cpp", kFiles / 4 * 3);
}
void BM_ReadDirectory_Glob(benchmark::State& state) {
  SelectGlob(state, DeepRoot() + "/[!.]*/module*/*.cpp", kFiles / 4 * 3);
}
void BM_ReadDirectoryFlat_Ours(benchmark::State& state) {
  SelectOurs(state, FlatRoot() + "/group0/module0/*.cpp", kFiles / 4 * 3);
}
void BM_ReadDirectoryFlat_Glob(benchmark::State& state) {
  SelectGlob(state, FlatRoot() + "/group0/module0/*.cpp", kFiles / 4 * 3);
}

void ListOurs(benchmark::State& state, const std::string& root) {
  for (auto _ : state) {
    VorListValVorString paths;
    ReadRecursiveDirectory(root, paths);
    CheckCount(state, static_cast<std::size_t>(paths.Size()), kFiles);
  }
}

void ListFilesystem(benchmark::State& state, const std::string& root) {
  for (auto _ : state) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(
             root, std::filesystem::directory_options::follow_directory_symlink)) {
      if (!entry.is_directory()) paths.push_back(entry.path().native());
    }
    std::sort(paths.begin(), paths.end());
    CheckCount(state, paths.size(), kFiles);
  }
}

// Without -L, which would make find examine each file.
void ListFind(benchmark::State& state, const std::string& root) {
  for (auto _ : state) {
    std::vector<std::string> paths;
    FILE* find = popen(("find " + root + " ! -type d").c_str(), "re");
    char* line = nullptr;
    std::size_t room = 0;
    for (ssize_t size; (size = getline(&line, &room, find)) > 0;) {
      paths.emplace_back(line, static_cast<std::size_t>(size - 1));
    }
    free(line);
    pclose(find);
    std::sort(paths.begin(), paths.end());
    CheckCount(state, paths.size(), kFiles);
  }
}

void BM_ReadRecursiveDirectory_Ours(benchmark::State& state) {
  ListOurs(state, DeepRoot());
}
void BM_ReadRecursiveDirectory_Filesystem(benchmark::State& state) {
  ListFilesystem(state, DeepRoot());
}
void BM_ReadRecursiveDirectory_Find(benchmark::State& state) {
  ListFind(state, DeepRoot());
}
void BM_ReadRecursiveDirectoryFlat_Ours(benchmark::State& state) {
  ListOurs(state, FlatRoot());
}
void BM_ReadRecursiveDirectoryFlat_Filesystem(benchmark::State& state) {
  ListFilesystem(state, FlatRoot());
}
void BM_ReadRecursiveDirectoryFlat_Find(benchmark::State& state) {
  ListFind(state, FlatRoot());
}

// Real time: find runs in a process of its own.
void Register(const char* name, void (*function)(benchmark::State&)) {
  benchmark::RegisterBenchmark(name, function)
      ->Arg(kFiles)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

const bool isRegistered = [] {
  Register("BM_ReadDirectory/ours", BM_ReadDirectory_Ours);
  Register("BM_ReadDirectory/glob", BM_ReadDirectory_Glob);
  Register("BM_ReadDirectoryFlat/ours", BM_ReadDirectoryFlat_Ours);
  Register("BM_ReadDirectoryFlat/glob", BM_ReadDirectoryFlat_Glob);
  Register("BM_ReadRecursiveDirectory/ours", BM_ReadRecursiveDirectory_Ours);
  Register("BM_ReadRecursiveDirectory/fs_recursive", BM_ReadRecursiveDirectory_Filesystem);
  Register("BM_ReadRecursiveDirectory/find", BM_ReadRecursiveDirectory_Find);
  Register("BM_ReadRecursiveDirectoryFlat/ours", BM_ReadRecursiveDirectoryFlat_Ours);
  Register("BM_ReadRecursiveDirectoryFlat/fs_recursive", BM_ReadRecursiveDirectoryFlat_Filesystem);
  Register("BM_ReadRecursiveDirectoryFlat/find", BM_ReadRecursiveDirectoryFlat_Find);
  return true;
}();

}  // namespace
