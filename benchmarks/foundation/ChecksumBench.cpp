#include <benchmark/benchmark.h>

#include <string>

#include "foundation/Checksum.h"
#include "foundation/CrcTables.h"

namespace {

std::string TextOf(std::size_t size) {
  std::string text(size, 'a');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>('!' + i * 7 % 90);
  return text;
}

unsigned BitSerial(const char* text, unsigned seed) {
  unsigned remainder = 0;
  const auto shiftIn = [&remainder](unsigned bit) {
    remainder = (remainder << 1 | bit) ^ ((remainder & 0x80000000u) != 0 ? 0xC5u : 0u);
  };
  for (; *text != '\0'; ++text) {
    for (int bit = 7; bit >= 0; --bit) shiftIn(static_cast<unsigned char>(*text) >> bit & 1u);
  }
  for (int bit = 31; bit >= 0; --bit) shiftIn(seed >> bit & 1u);
  return remainder;
}

template <unsigned (*kChecksum)(const char*, unsigned)>
void Checksum(benchmark::State& state) {
  const std::string text = TextOf(static_cast<std::size_t>(state.range(0)));
  unsigned seed = 1;
  for (auto _ : state) benchmark::DoNotOptimize(seed = kChecksum(text.c_str(), seed));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

unsigned ByTables(const char* text, unsigned seed) {
  const std::size_t size = std::char_traits<char>::length(text);
  return vor::CrcByTables(0, reinterpret_cast<const unsigned char*>(text), size) ^ seed;
}

void Sizes(benchmark::internal::Benchmark* bench) {
  for (const int size : {16, 64, 256, 4096, 1 << 20}) bench->Arg(size);
}

BENCHMARK(Checksum<crc>)->Name("BM_Crc/ours")->Apply(Sizes);
BENCHMARK(Checksum<BitSerial>)->Name("BM_Crc/bit_serial")->Apply(Sizes);
// As on a processor without carry-less multiplication.
BENCHMARK(Checksum<ByTables>)->Name("BM_CrcByTables/ours")->Apply(Sizes);
BENCHMARK(Checksum<BitSerial>)->Name("BM_CrcByTables/bit_serial")->Apply(Sizes);

}  // namespace
