#include <benchmark/benchmark.h>
#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "base/VorListValVorString.h"
#include "foundation/FileUtilities.h"

namespace {

// A file of lines, removed at the end.
class LineFile {
 public:
  LineFile(std::int64_t lines, std::string_view prefix) {
    std::string name = std::filesystem::temp_directory_path() / "vor_bench_XXXXXX";
    const int fd = mkstemp(name.data());
    if (fd < 0) abort();
    close(fd);
    _path = name;
    std::ofstream file(_path);
    for (std::int64_t i = 0; i < lines; ++i) file << prefix << i << '\n';
  }
  ~LineFile() { std::filesystem::remove(_path); }
  const std::string& Path() const { return _path; }

 private:
  std::string _path;
};

constexpr std::string_view kShort = "test";  // lines that a string holds without allocating
constexpr std::string_view kLong = "project/framework/module/src/source_file_number_";

using Reader = void (*)(const std::string& path, VorListValVorString& lines);

void OurRead(const std::string& path, VorListValVorString& lines) {
  ReadFile(VorString(path), lines);
}

void GetLineRead(const std::string& path, VorListValVorString& lines) {
  std::ifstream stream(path);
  for (std::string line; std::getline(stream, line);) {
    for (char& c : line) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 32 || byte >= 128) c = ' ';
    }
    lines.Append(line);
  }
}

// Measures building the list, not destroying it.  The file is read once before, and the heap keeps
// freed memory; otherwise both would mostly wait for pages from the system.
void Read(benchmark::State& state, Reader reader, std::string_view prefix) {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
  const LineFile file(state.range(0), prefix);
  VorListValVorString lines;
  reader(file.Path(), lines);
  lines.RemoveAll(VorCollec::ReleaseMemory);
  for (auto _ : state) {
    reader(file.Path(), lines);
    state.PauseTiming();
    if (lines.Size() != state.range(0)) state.SkipWithError("lines are missing");
    lines.RemoveAll(VorCollec::ReleaseMemory);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Register(const char* name, Reader reader, std::string_view prefix) {
  benchmark::RegisterBenchmark(name, Read, reader, prefix)->Arg(1000)->Arg(1000000);
}

[[maybe_unused]] const bool registered = [] {
  Register("BM_ReadFileShortLines/ours", OurRead, kShort);
  Register("BM_ReadFileShortLines/getline", GetLineRead, kShort);
  Register("BM_ReadFile/ours", OurRead, kLong);
  Register("BM_ReadFile/getline", GetLineRead, kLong);
  return true;
}();

}  // namespace
