// Every process has one counter of 16 bits.  Within one second an identifier of a process differs
// from the others by the counter alone, so at most 65,536 are drawn in a second; a thread that
// needs another one waits until the second is over.  The counter is not reset from second to
// second.
//
// Threads draw without a lock: one word holds the second of the last identifier, the counter of the
// next one and the counter of the first one of that second.

#include "persistence/TAUUIDGenerator.h"

#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

#include "base/ForkSafeLock.h"
#include "persistence/MachineNumber.h"

namespace {

constexpr int kRecordSize = 15;
constexpr int kTextSize = kRecordSize / 3 * 4;
constexpr int kFirstCounter = 0;
constexpr unsigned char kKind = 3;
constexpr char kAlphabet[] = "+-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

struct Text {
  char characters[kTextSize + 1];
  Text* next;  // of the free ones
};

constinit vor::ForkSafeMutex mutex(vor::ForkStage::kLeaf);
const vor::ForkRegistration registration(mutex);
constinit Text* freeTexts = nullptr;  // guarded by mutex

// The text in which a thread gets its identifiers.  When the thread ends, a later thread may reuse
// the text.  Its characters stay until then, because a caller may still read them.
class ThreadText {
 public:
  ThreadText() noexcept {
    const std::lock_guard guard(mutex);
    _text = freeTexts == nullptr ? new Text : std::exchange(freeTexts, freeTexts->next);
  }
  ThreadText(const ThreadText&) = delete;
  ThreadText& operator=(const ThreadText&) = delete;
  ~ThreadText() {
    const std::lock_guard guard(mutex);
    _text->next = std::exchange(freeTexts, _text);
  }

  char* Get() const { return _text->characters; }

 private:
  Text* _text;
};

// The parts of the counter word.
struct Drawn {
  std::uint32_t second;
  std::uint16_t next;
  std::uint16_t first;
};

constexpr std::uint64_t Pack(Drawn drawn) {
  return std::uint64_t{drawn.second} << 32 | std::uint64_t{drawn.next} << 16 | drawn.first;
}

constexpr Drawn Unpack(std::uint64_t word) {
  return {static_cast<std::uint32_t>(word >> 32), static_cast<std::uint16_t>(word >> 16),
          static_cast<std::uint16_t>(word)};
}

void PauseBriefly() {
  constexpr timespec kPause = {0, 5'000'000};
  nanosleep(&kPause, nullptr);
}

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
// Not set by Init: several threads may run it at once, and one could reset the counter after
// another has drawn from it.
constinit std::atomic<std::uint64_t> TAUUIDGenerator::counter{
    Pack({0, kFirstCounter, kFirstCounter})};
constinit std::atomic<int> TAUUIDGenerator::init_done{0};

TAUUIDGenerator::~TAUUIDGenerator() = default;

const char* TAUUIDGenerator::Get() {
  thread_local const ThreadText text;
  Init();
  const auto [second, count] = Draw();
  unsigned char record[kRecordSize];
  unsigned char* next = Put<4>(record, second);
  next = Put<4>(next, static_cast<std::uint32_t>(machine_ident.load(std::memory_order_relaxed)));
  next = Put<1>(next, kKind);
  // Read each time: a number stored before a fork would be that of the parent.
  next = Put<4>(next, static_cast<std::uint32_t>(GetProcessIdent()));
  Put<2>(next, count);
  Convert(record, text.Get());
  return text.Get();
}

TAUUIDGenerator::Moment TAUUIDGenerator::Draw() {
  std::uint64_t word = counter.load(std::memory_order_acquire);
  for (;;) {
    const Drawn last = Unpack(word);
    // Read after the counter, so that it is not earlier than the second stored there.
    const auto second = static_cast<std::uint32_t>(GetTime());
    const bool isSameSecond = second == last.second;
    if (isSameSecond && last.next == last.first) {  // all values of this second are used
      PauseBriefly();
      word = counter.load(std::memory_order_acquire);
      continue;
    }
    const Drawn drawn = {second, static_cast<std::uint16_t>(last.next + 1),
                         isSameSecond ? last.first : last.next};
    if (counter.compare_exchange_weak(word, Pack(drawn), std::memory_order_acq_rel)) {
      return {second, last.next};
    }
  }
}

int TAUUIDGenerator::Init() {
  if (init_done.load(std::memory_order_acquire) == 1) return 1;
  // No lock is needed, and a fork could leave it locked in the child: threads that run this at once
  // find the same number.
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
