#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "sourcefiles/VorFilePrepro.h"
#include "support/NaivePrepro.h"

// Removes the comments of a source text, then everything that can be removed.  The time of a plain
// copy is the lower limit.

namespace {

constexpr char kSource[] =
    "// Copyright (c) The authors of this file. All rights reserved, as far as there are any.\n"
    "#include \"module/Header.h\"\n"
    "#define LIMIT(a, b) \\\n"
    "  ((a) < (b) ? (a) : (b))\n"
    "\n"
    "/* Looks for a text in a table.\n"
    " * Returns its position; -1 if it is absent, which callers test for.\n"
    " */\n"
    "int TableOfTexts::Find(const char* text, int start) const {\n"
    "  for (int position = start; position < _size; ++position) {\n"
    "    if (_texts[position] == nullptr) continue;  // removed\n"
    "    if (strcmp(_texts[position], text) == 0 && text[0] != '\\0') return position;\n"
    "  }\n"
    "  Report(\"The text \\\"%s\\\" is not in the table\\n\", text);\n"
    "  return _sum / (_size + 1) > 0 ? -1 : -2;\n"
    "}\n\n";

// 1 MB of it in a file, which is removed at the end.
struct SourceFile {
  SourceFile() {
    while (text.size() < 1'000'000) text += kSource;
    const int fd = mkstemp(path.data());
    if (fd < 0) abort();
    close(fd);
    std::ofstream(path) << text;
  }
  ~SourceFile() { std::filesystem::remove(path); }

  std::string path = std::filesystem::temp_directory_path() / "vor_bench_XXXXXX";
  std::string text;
};

const SourceFile& TheFile() {
  static const SourceFile file;
  return file;
}

template <typename Body>
void Measure(benchmark::State& state, Body body) {
  for (auto _ : state) {
    char* const out = body(static_cast<int>(state.range(0)));
    benchmark::DoNotOptimize(out);
    benchmark::ClobberMemory();
    free(out);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(TheFile().text.size() * state.iterations()));
}

void Ours(benchmark::State& state) {
  VorFilePrepro prepro(TheFile().path.c_str());
  Measure(state, [&prepro](int flags) {
    char* out = nullptr;
    if (prepro.preprocess(flags, out) != 0) abort();
    return out;
  });
}

void Bytewise(benchmark::State& state) {
  const std::string& text = TheFile().text;
  Measure(state, [&text](int flags) {
    auto* const out = static_cast<char*>(malloc(text.size() + 1));
    if (NaivePrepro(text.c_str(), flags, out) != 0) abort();
    return out;
  });
}

void Copy(benchmark::State& state) {
  const std::string& text = TheFile().text;
  Measure(state, [&text](int) {
    return static_cast<char*>(memcpy(malloc(text.size() + 1), text.c_str(), text.size() + 1));
  });
}

constexpr int kComments = 3;
constexpr int kAll = 31;

BENCHMARK(Ours)->Name("BM_Preprocess/ours")->Arg(kComments)->Arg(kAll);
BENCHMARK(Bytewise)->Name("BM_Preprocess/bytewise")->Arg(kComments)->Arg(kAll);
BENCHMARK(Copy)->Name("BM_Preprocess/memcpy")->Arg(kComments)->Arg(kAll);

}  // namespace
