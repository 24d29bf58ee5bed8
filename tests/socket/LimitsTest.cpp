#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "socket/Peers.h"

namespace {

constexpr int kLarge = 5000;  // bytes of allocations that may fail

thread_local int granted = -1;  // large allocations before one fails; -1 if none does

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (granted >= 0 && size >= std::size_t{kLarge} && granted-- == 0) return nullptr;
  return malloc(size == 0 ? 1 : size);
}
void* operator new(std::size_t size) {
  void* const memory = operator new(size, std::nothrow);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  free(memory);
}

TEST(Limits, EndReadsThatAPeerDrawsOut) {
  const struct {
    Reading read;
    std::string start;
    const char* message = kTimedOut;  // although something arrives all the time
    int seconds = 1;
    int stall = 60;
  } rows[] = {
      {&Ours::Text, "____"},
      {&Ours::List, kMark + Integer(0) + Integer(1000)},
      {&Ours::Binary, "____"},
      {&Ours::String, Integer(100000)},
      {&Ours::Number, ""},
      {&Ours::File, "_ ! ____"},
      // Silence.
      {&Ours::Text, "$   abc", kNotFull, 0, 1},
      {&Ours::Text, "$   abc", kNotFull, 60, 1},
      // Definitions, used or not, are no more than a block; what is more is not waited for.
      {&Ours::Text, kMark + Integer(0) + Integer(16777216), kNoSize},
      {&Ours::Text, kMark + Integer(0) + Word("x") + Integer(1) + Integer(16777214), kNoSize}};
  std::vector<std::thread> reading;
  for (const auto& row : rows) {
    reading.emplace_back([&row] {
      Ours ours;
      ours.SetStallLimit(row.stall);
      ours.SetReadLimits(row.seconds, 0);
      const RawPeer peer(ours);
      peer.Send(row.start);
      std::atomic<bool> isOver = row.message != kTimedOut || row.start.empty();
      std::thread dribbling([&] {
        for (; !isOver; usleep(10000)) peer.Send("x");
      });
      EXPECT_EQ((ours.*row.read)(), row.message == kTimedOut ? 2 : 1) << row.start;
      EXPECT_EQ(ours.Message(), row.message) << row.start;
      isOver = true;
      dribbling.join();
    });
  }
  for (std::thread& thread : reading) thread.join();
}

TEST(Limits, AreOfEachReadByItself) {
  const std::string named = kMark + Integer(0) + Word(std::string(30, 'w')) + Integer(-1) +
                            Integer(2) + Integer(0) + Integer(0);
  Ours ours;
  ours.SetReadLimits(60, static_cast<int>(named.size()));
  const std::string fits = Header(54) + std::string(54, 'x');
  const RawPeer peer(ours, fits + fits + named);
  EXPECT_EQ(ours.Text(), 0);
  EXPECT_EQ(ours.List(), 0);
  EXPECT_EQ(ours.Text(), 1);  // bounded as the bytes that stand for it are
  EXPECT_EQ(ours.Message(), kNotFull);
}

TEST(Limits, ReadsWithoutMemoryEndInTheirError) {
  const std::string word(kLarge, 'w');
  const std::string plain = Header(kLarge) + word;
  const std::string ofNul = plain.substr(0, kLarge + 3) + '\0';
  const std::string named =
      kMark + Integer(0) + Word(word) + Integer(-1) + Integer(2) + Integer(0) + Integer(0);
  const struct {
    Reading read;
    std::string bytes;
    const char* message = kNotFull;
  } rows[] = {{&Ours::Text, plain}, {&Ours::Text, ofNul}, {&Ours::List, plain},
              {&Ours::Text, named}, {&Ours::List, named}, {&Ours::String, Word(word), kNoSize}};
  for (const auto& row : rows) {
    int failures = 0;
    for (bool failed = true; failed; failures += failed) {
      Ours ours;
      const RawPeer peer(ours, row.bytes);
      granted = failures;
      const int result = (ours.*row.read)();
      failed = granted < 0;
      granted = -1;
      ASSERT_EQ(result, failed ? 1 : 0) << ours.Message();
      EXPECT_EQ(ours.Message(), failed ? row.message : "no error on socket");
      EXPECT_TRUE(!failed || ours.Value().empty());
    }
    EXPECT_GT(failures, 0) << row.message;
  }
}
