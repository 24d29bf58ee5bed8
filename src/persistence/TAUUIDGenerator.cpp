#include "persistence/TAUUIDGenerator.h"

#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <optional>

#include "persistence/MachineNumber.h"

namespace {

constexpr int kRecordSize = 15;
constexpr int kTextSize = kRecordSize / 3 * 4;
constexpr short kFirstCounter = 0;
constexpr unsigned char kKind = 3;
constexpr char kAlphabet[] = "+-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

// The low bytes of a number, the most significant first.
template <int Bytes>
unsigned char* Put(unsigned char* to, std::uint32_t number) {
  for (int shift = (Bytes - 1) * 8; shift >= 0; shift -= 8) {
    *to++ = static_cast<unsigned char>(number >> shift);
  }
  return to;
}

}  // namespace

constinit std::atomic<int> TAUUIDGenerator::machine_ident{0};
// Not set by Init, which threads may enter together: it could take back what one of them has drawn.
constinit std::atomic<short> TAUUIDGenerator::counter{kFirstCounter};
constinit std::atomic<int> TAUUIDGenerator::init_done{0};

TAUUIDGenerator::~TAUUIDGenerator() = default;

const char* TAUUIDGenerator::Get() {
  thread_local char text[kTextSize + 1];
  Init();
  unsigned char record[kRecordSize];
  unsigned char* next = Put<4>(record, static_cast<std::uint32_t>(GetTime()));
  next = Put<4>(next, static_cast<std::uint32_t>(machine_ident.load(std::memory_order_relaxed)));
  next = Put<1>(next, kKind);
  // Asked each time: a number kept since before a fork would be the parent's.
  next = Put<4>(next, static_cast<std::uint32_t>(GetProcessIdent()));
  Put<2>(next, static_cast<std::uint16_t>(counter.fetch_add(1, std::memory_order_relaxed)));
  Convert(record, text);
  return text;
}

int TAUUIDGenerator::Init() {
  if (init_done.load(std::memory_order_acquire) == 1) return 1;
  // Without a lock, which a fork at the wrong moment would leave locked in the child: threads that
  // come here together find the same number.
  machine_ident.store(GetMachineIdent(), std::memory_order_relaxed);
  return init_done.exchange(1, std::memory_order_acq_rel);
}

int TAUUIDGenerator::GetMachineIdent() {
  const std::optional<std::uint32_t> number = vor::MachineNumber();
  if (!number) Error();
  return static_cast<int>(number.value_or(0));
}

int TAUUIDGenerator::GetProcessIdent() {
  return getpid();
}

int TAUUIDGenerator::FirstCounter() {
  return kFirstCounter;
}

int TAUUIDGenerator::GetTime() {
  return static_cast<int>(time(nullptr));
}

void TAUUIDGenerator::Convert(const unsigned char* record, char* out) {
  for (const unsigned char* end = record + kRecordSize; record != end; record += 3) {
    const unsigned bits = unsigned{record[0]} << 16 | unsigned{record[1]} << 8 | record[2];
    *out++ = kAlphabet[bits >> 18];
    *out++ = kAlphabet[bits >> 12 & 63];
    *out++ = kAlphabet[bits >> 6 & 63];
    *out++ = kAlphabet[bits & 63];
  }
  *out = '\0';
}

void TAUUIDGenerator::Copy(void* to, const void* from, int n) {
  if (n > 0) memcpy(to, from, static_cast<std::size_t>(n));
}

void TAUUIDGenerator::Error() {
  printf("Unable to allocate an UUID\n");
}
