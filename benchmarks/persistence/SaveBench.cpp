// Saving a tree of 100,000 attributes, compared with writing prepared lines: by write(2), and
// through a flushed stream.  All write the same files.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "persistence/TAPObject.h"

namespace {

constexpr int kObjects = 100;
constexpr int kAttributes = 1000;  // of each object

class Directory {
 public:
  Directory() {
    std::string pattern = std::filesystem::temp_directory_path() / "vor_bench_XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) abort();
    _path = pattern;
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  ~Directory() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
  }

  const std::string& Path() const { return _path; }

 private:
  std::string _path;
};

std::string NameOf(int attribute) {
  return "attribute_" + std::to_string(attribute);
}

bool IsNumber(int attribute) {
  return attribute % 2 == 0;
}

// Objects under the root, with numbers and texts in turn.
TAPObject* MakeTree() {
  auto* const root = new TAPObject;
  for (int i = 0; i < kObjects; ++i) {
    auto* const object = new TAPObject;
    for (int k = 0; k < kAttributes; ++k) {
      const std::string name = NameOf(k);
      object->SetAttribute(name.c_str(),
                           IsNumber(k) ? TAPAttr(k) : TAPAttr(("text of " + name).c_str()));
    }
    root->SetAttribute(("object_" + std::to_string(i)).c_str(), object);
    object->Release();
  }
  return root;
}

constexpr std::array<const char*, 4> kFiles = {"AttrInteger.txt", "AttrObject.txt",
                                               "AttrString.txt", "Objects.txt"};

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The lines of a save by file.  The peers write one file after the other, which is easier than the
// order of a save.
using Lines = std::vector<std::pair<std::string, std::vector<std::string>>>;

Lines LinesOf(TAPObject& root) {
  const Directory directory;
  root.SaveToFile(TAFileName(directory.Path().c_str()));
  Lines lines;
  for (const char* name : kFiles) {
    lines.emplace_back(name, std::vector<std::string>());
    std::ifstream file(directory.Path() + "/" + name);
    for (std::string line; std::getline(file, line);) lines.back().second.push_back(line + "\n");
  }
  return lines;
}

struct Sample {
  TAPObject* root = MakeTree();
  Lines lines = LinesOf(*root);
  ~Sample() { root->Release(); }
};

const Sample& TheSample() {
  static const Sample sample;
  return sample;
}

// Checks the files of the last run.
void Check(benchmark::State& state, const Directory& directory) {
  for (const auto& [name, lines] : TheSample().lines) {
    std::string expected;
    for (const std::string& line : lines) expected += line;
    if (ContentOf(directory.Path() + "/" + name) != expected) state.SkipWithError("files differ");
  }
}

void Ours(benchmark::State& state) {
  const Sample& sample = TheSample();
  const Directory directory;
  for (auto _ : state) sample.root->SaveToFile(TAFileName(directory.Path().c_str()));
  Check(state, directory);
}

void PlainWrite(benchmark::State& state) {
  const Sample& sample = TheSample();
  const Directory directory;
  for (auto _ : state) {
    for (const auto& [name, lines] : sample.lines) {
      const int fd = open((directory.Path() + "/" + name).c_str(),
                          O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
      for (const std::string& line : lines) {
        benchmark::DoNotOptimize(write(fd, line.data(), line.size()));
      }
      close(fd);
    }
  }
  Check(state, directory);
}

void FlushedStream(benchmark::State& state) {
  const Sample& sample = TheSample();
  const Directory directory;
  for (auto _ : state) {
    for (const auto& [name, lines] : sample.lines) {
      std::ofstream file(directory.Path() + "/" + name);
      for (const std::string& line : lines) file << line << std::flush;
    }
  }
  Check(state, directory);
}

// Real time: most of it is spent in the system.
void Register(const char* name, void (*function)(benchmark::State&)) {
  benchmark::RegisterBenchmark(name, function)
      ->Arg(kObjects * kAttributes)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

const bool isRegistered = [] {
  Register("BM_SaveTree/ours", Ours);
  Register("BM_SaveTree/write", PlainWrite);
  Register("BM_SaveTree/ofstream_flush", FlushedStream);
  return true;
}();

}  // namespace
