#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <new>
#include <string>
#include <thread>

#include "base/VorListValVorString.h"
#include "socket/RawPeer.h"
#include "socket/TASocket.h"

namespace {

constexpr std::size_t kLarge = 5000;  // bytes of allocations that may fail

thread_local int granted = -1;  // large allocations before one fails; -1 if none does

void* Allocate(std::size_t size) {
  if (granted >= 0 && size >= kLarge && granted-- == 0) return nullptr;
  return malloc(size == 0 ? 1 : size);
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  free(memory);
}

namespace {

const std::string kMark = "\x9f```";
const char* const kNoSize = "Unable to get block size";
const char* const kNotFull = "Unable to get full block";

int ReadText(TASocket& socket) {
  VorString text;
  return socket.GetBlock(text, 0);
}
int ReadList(TASocket& socket) {
  VorListValVorString list;
  const int result = socket.GetBlock(list, 0);
  EXPECT_TRUE(result == 0 || list.Size() == 0);
  return result;
}
int ReadBinary(TASocket& socket) {
  int size = 0;
  void* data = nullptr;
  const int result = socket.GetBinBlock(&size, &data, 0);
  free(data);
  return result;
}
int ReadString(TASocket& socket) {
  VorString text;
  return socket.Read(text, 0);
}
int ReadFile(TASocket& socket) {
  return socket.GetFile("/dev/null", 0);
}

}  // namespace

TEST(Limits, APeerCannotDrawAReadOut) {
  const struct {
    int (*read)(TASocket&);
    std::string start;
  } rows[] = {{ReadText, "____"},     {ReadList, kMark + Integer(0) + Integer(1000)},
              {ReadBinary, "____"},   {ReadString, Integer(100000)},
              {ReadFile, "_ ! ____"}, {ReadText, ""}};
  for (const auto& row : rows) {
    TASocket ours;
    ours.SetStallLimit(60);
    ours.SetReadLimits(1, 0);
    const RawPeer peer(ours);
    peer.Send(row.start);
    std::atomic<bool> isOver = false;
    std::thread dribbling([&] {
      while (!isOver && !row.start.empty()) {
        peer.Send("x");
        usleep(10000);
      }
    });
    EXPECT_EQ(row.read(ours), 2) << row.start;
    EXPECT_STREQ(ours.GetErrMsg(),
                 "Error reading from stream socket (select): Connection timed out");
    isOver = true;
    dribbling.join();
  }
}

TEST(Limits, AreOfEachReadByItself) {
  TASocket ours;
  ours.SetReadLimits(60, 7);
  const RawPeer peer(ours);
  peer.Send("#   abc#   abc$   abcd");
  EXPECT_EQ(ReadText(ours), 0);
  EXPECT_EQ(ReadList(ours), 0);
  EXPECT_EQ(ReadText(ours), 1);
  EXPECT_STREQ(ours.GetErrMsg(), kNotFull);
  // Silence ends it before its time.
  TASocket waiting;
  waiting.SetStallLimit(1);
  waiting.SetReadLimits(60, 0);
  const RawPeer silent(waiting);
  silent.Send("$   abc");
  EXPECT_EQ(ReadText(waiting), 1);
  EXPECT_STREQ(waiting.GetErrMsg(), kNotFull);
  // A text is bounded as the bytes that stand for it are.
  const std::string word(30, 'w');
  const std::string twice =
      kMark + Integer(0) + Word(word) + Integer(-1) + Integer(2) + Integer(0) + Integer(0);
  TASocket other;
  other.SetReadLimits(0, static_cast<int>(twice.size()));
  const RawPeer naming(other, twice);
  EXPECT_EQ(ReadText(other), 1);
  EXPECT_STREQ(other.GetErrMsg(), kNotFull);
}

TEST(Limits, ReadsWithoutMemoryEndInTheirError) {
  const std::string word(kLarge, 'w');
  const std::string header = "(.! ";  // of 5000 bytes
  const std::string ofNul = word.substr(1) + '\0';
  const std::string named =
      kMark + Integer(0) + Word(word) + Integer(-1) + Integer(2) + Integer(0) + Integer(0);
  const struct {
    int (*read)(TASocket&);
    std::string bytes;
    const char* message;
  } rows[] = {{ReadText, header + word, kNotFull}, {ReadText, header + ofNul, kNotFull},
              {ReadList, header + word, kNotFull}, {ReadText, named, kNotFull},
              {ReadList, named, kNotFull},         {ReadString, Word(word), kNoSize}};
  for (const auto& row : rows) {
    int failures = 0;
    for (;; ++failures) {
      TASocket ours;
      const RawPeer peer(ours, row.bytes);
      granted = failures;
      const int result = row.read(ours);
      const bool failed = granted < 0;
      granted = -1;
      ASSERT_EQ(result, failed ? 1 : 0) << ours.GetErrMsg();
      if (!failed) break;
      EXPECT_STREQ(ours.GetErrMsg(), row.message);
    }
    EXPECT_GT(failures, 0) << row.message;
  }
}
