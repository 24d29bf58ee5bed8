#include <errno.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "socket/Peers.h"

namespace {

constexpr int kLarge = 5000;  // bytes of allocations that may fail

thread_local int granted = -1;  // large allocations before one fails; -1 if none does

}  // namespace

void* operator new(std::size_t size) {
  if (granted >= 0 && size >= std::size_t{kLarge} && granted-- == 0) throw std::bad_alloc();
  return malloc(std::max<std::size_t>(size, 1));
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  free(memory);
}

TEST(Limits, EndReadsOfASlowPeer) {
  const struct {
    Reading read;
    std::string start;
    const char* message = kTimedOut;  // although something arrives all the time
    int seconds = 1, stall = 60;
  } rows[] = {{&Ours::Text, "____"},
              {&Ours::List, kMark + Integer(0) + Integer(1000)},
              {&Ours::Binary, "____"},
              {&Ours::String, Integer(100000)},
              {&Ours::Number, ""},
              {&Ours::File, "_ ! ____"},
              {&Ours::Text, "$   abc", kNotFull, 0, 1},
              {&Ours::Text, "$   abc", kNotFull, 60, 1}};
  std::vector<std::jthread> reading;
  for (const auto& row : rows) {
    reading.emplace_back([&row] {
      Ours ours;
      ours.SetStallLimit(row.stall);
      ours.SetReadLimits(row.seconds, 0);
      const RawPeer peer(ours);
      peer.Send(row.start);
      const bool isLate = row.message == kTimedOut;
      const std::jthread dribbling([&](const std::stop_token& stop) {
        for (; isLate && !row.start.empty() && !stop.stop_requested(); usleep(10000))
          peer.Send("x");
      });
      EXPECT_EQ((ours.*row.read)(), isLate ? 2 : 1) << row.start;
      EXPECT_EQ(ours.LastFailure(), Failure(row.message, ETIMEDOUT)) << row.start;
    });
  }
}

TEST(Limits, EndWritesToASlowPeer) {
  const std::vector<char> data(TASocket::kLargestBlock);  // more than waits between two sockets
  const struct {
    int seconds, bytesPerSecond, stall;
    std::size_t piece;  // that the peer takes each time
    int result = 1;
  } rows[] = {{1, 0, 60, 1000}, {0, INT_MAX, 60, 1000},     {60, 1000, 1, 0},
              {0, 0, 1, 0},     {0, 1, 60, data.size(), 0}, {0, 0, 60, data.size(), 0}};
  std::vector<std::jthread> writing;
  for (const auto& row : rows) {
    writing.emplace_back([&] {
      Ours ours;
      ours.SetStallLimit(row.stall);
      ours.SetWriteLimits(row.seconds, row.bytesPerSecond);
      const RawPeer peer(ours);
      const std::jthread taking([&](const std::stop_token& stop) {
        for (; row.piece > 0 && !stop.stop_requested(); usleep(10000)) peer.Receive(row.piece);
      });
      EXPECT_EQ(ours.PutBinBlock(TASocket::kLargestBlock, data.data()), row.result) << row.seconds;
      EXPECT_EQ(ours.GetErrno(), row.result == 0 ? 0 : ETIMEDOUT) << row.seconds;
      ours.Close();
    });
  }
}

TEST(Limits, ReadsWithoutMemoryFail) {
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
      EXPECT_EQ(ours.LastFailure(),
                failed ? Failure(row.message, ENOMEM) : Failure("no error on socket", 0));
      EXPECT_EQ(ours.Value().empty(), failed);
    }
    EXPECT_GT(failures, 0) << row.message;
  }
}
