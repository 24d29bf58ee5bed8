#include "sourcefiles/TAFileBuffer.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "base/ScopedLock.h"
#include "filenames/TAFileName.h"
#include "support/Eventually.h"
#include "support/InProcess.h"
#include "support/TempDir.h"
#include "thread/TAThreadLock.h"

namespace {

bool Becomes(int& counter, int value) {
  return Eventually([&counter, value] { return std::atomic_ref(counter) == value; });
}

bool IsParked() {
  return Becomes(TAFileBuffer::ASyncLoadRunning, -1);
}

}  // namespace

TEST(TAFileBuffer, ReadsItsFileOnce) {
  const TempDir dir;
  TAFileBuffer::ASyncBufferSize = 0;
  const std::string content = std::string(200'000, 'x') + '\0' + "end";
  TAFileBuffer buffer(dir.Write("file", content).c_str(), 1);
  EXPECT_EQ(buffer.LoadFile(), 0);
  dir.Write("file", "other");
  EXPECT_EQ(buffer.LoadFile(), 0);
  ASSERT_EQ(buffer.GetSize(), static_cast<int>(content.size()));
  EXPECT_EQ(std::string(buffer.GetBuffer(), content.size() + 1), content + '\0');
  EXPECT_EQ(TAFileBuffer::ASyncBufferSize, static_cast<int>(content.size()));

  TAFileBuffer empty(dir.Write("empty", "").c_str(), 0), missing((dir / "missing").c_str(), 0);
  EXPECT_STREQ(empty.GetBuffer(), "");
  EXPECT_EQ(missing.LoadFile(), 1);
  dir.Write("missing", "too late");
  EXPECT_EQ(missing.LoadFile(), 0);
  EXPECT_EQ(missing.GetBuffer(), nullptr);
  EXPECT_EQ(missing.GetSize(), 0);
}

TEST(TAFileBuffer, SavesInPlaceOfWhatIsThere) {
  const TempDir dir;
  TAFileName own(dir.Write("source", "text").c_str()), nowhere((dir / "missing/target").c_str());
  TAFileName target(dir.Write("target", "longer text").c_str());
  TAFileBuffer buffer(own, 0), directory(dir.Path().c_str(), 0);
  EXPECT_EQ(buffer.SaveAs(nowhere), 1);
  EXPECT_EQ(buffer.SaveAs(own), 0);
  EXPECT_EQ(dir.Read("source"), "text");
  EXPECT_EQ(directory.SaveAs(target), 1) << "opens, but cannot be read";
  EXPECT_EQ(dir.Read("target"), "longer text");
  EXPECT_EQ(buffer.SaveAs(target), 0);
  EXPECT_EQ(dir.Read("target"), "text");
}

TEST(TAFileBuffer, ShowsWholeChunksAndSavesWholeTexts) {
  const TempDir dir;
  const std::string fifo = dir / "pipe";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::string content = std::string(15'000, 'x') + std::string(985'003, 'y');
  TAFileName target(dir.Write("target", "old").c_str());
  TAFileBuffer::ASyncBufferSize = 0;

  TAFileBuffer buffer(fifo.c_str(), 0);
  std::thread loader([&buffer] { EXPECT_EQ(buffer.LoadFile(), 0); });
  std::ofstream pipe(fifo);
  pipe << content.substr(0, 30'000) << std::flush;
  EXPECT_TRUE(Eventually([&buffer] { return buffer.GetSize() == 20'480; }));
  EXPECT_TRUE(Becomes(TAFileBuffer::ASyncBufferSize, 20'480));
  // A child does not wait for the thread of its parent.
  EXPECT_EQ(InProcess([&] { return strlen(buffer.GetBuffer()) == 20'480 ? 0 : 1; }), 0);
  EXPECT_EQ(InProcess([&] { return buffer.SaveAs(target); }), 1);
  EXPECT_EQ(dir.Read("target"), "old");

  std::thread saver([&] { EXPECT_EQ(buffer.SaveAs(target), 0); });
  std::thread writer([&] {
    pipe << content.substr(30'000);
    pipe.close();
  });
  for (int size = 0; size < static_cast<int>(content.size());) {
    size = buffer.GetSize();
    const std::string seen(buffer.GetBuffer(), static_cast<std::size_t>(size));
    ASSERT_EQ(seen, content.substr(0, seen.size()));
    ASSERT_TRUE(size > 112'640 || size % 10'240 == 0) << size;
  }
  for (std::thread* thread : {&loader, &saver, &writer}) thread->join();
  EXPECT_EQ(dir.Read("target"), content);
}

TEST(TAFileBuffer, LoopLoadsParksAndWaitsWhileOverloaded) {
  TAFileBuffer::ASyncCleanup();
  TAFileBuffer::ASyncLoad(0, nullptr);  // returns, as it is not to run

  const TempDir dir;
  TAFileBuffer first(dir.Write("first", "1").c_str(), 0);
  TAFileBuffer second(dir.Write("second", "22").c_str(), 0);
  VorListPtrTAFileBuffer list;
  TAFileBuffer::ASyncLoadList = &list;
  TAFileBuffer::ASyncBufferSize = 0x9C4000;
  TAFileBuffer::ASyncOverloadFlag = 0;
  TAFileBuffer::ASyncLoadRunning = 1;
  std::thread loop(TAFileBuffer::ASyncLoad, 0, nullptr);
  ASSERT_TRUE(IsParked());

  TAFileBuffer::ASyncLock.GetLock();
  list.Append(&first);
  std::atomic_ref(TAFileBuffer::ASyncLoadRunning).store(1);
  TAFileBuffer::ASyncPause.ReleaseLock();
  TAFileBuffer::ASyncLock.ReleaseLock();
  EXPECT_TRUE(Becomes(TAFileBuffer::ASyncOverloadFlag, 1));
  EXPECT_TRUE(Becomes(TAFileBuffer::ASyncBufferSize, 0x9C4001));

  TAFileBuffer::ASyncLock.GetLock();
  list[1] = &second;
  std::atomic_ref(TAFileBuffer::ASyncBufferSize).store(0);
  TAFileBuffer::ASyncOverloadLock.ReleaseLock();
  TAFileBuffer::ASyncLock.ReleaseLock();
  EXPECT_TRUE(Becomes(TAFileBuffer::ASyncBufferSize, 2));

  {
    const vor::ScopedLock holder(TAFileBuffer::ASyncLock);
    list.RemoveAll(VorCollec::ReleaseMemory);
  }
  ASSERT_TRUE(IsParked());
  TAFileBuffer::ASyncCleanup();
  loop.join();
  EXPECT_EQ(TAFileBuffer::ASyncLoadRunning, 0);
  TAFileBuffer::ASyncLoadList = nullptr;
}

TEST(TAFileBuffer, AChildFindsTheLockFree) {
  std::atomic<bool> isDone{false};
  std::thread holder([&isDone] {
    while (!isDone) const vor::ScopedLock held(TAFileBuffer::ASyncLock);
  });
  const auto take = [] {
    alarm(10);
    return TAFileBuffer::ASyncLock.GetLock();
  };
  for (int i = 0; i < 100; ++i) EXPECT_EQ(InProcess(take), 1);
  isDone = true;
  holder.join();
}

TEST(TAFileBuffer, ParkedLoopEndsWhenTheProcessExits) {
  static std::atomic<bool> hasEnded{false};
  const auto park = [] {
    static auto list = std::make_unique<VorListPtrTAFileBuffer>(100);  // gone before the loop ends
    TAFileBuffer::ASyncLoadList = list.get();
    TAFileBuffer::ASyncLoadRunning = 1;
    std::thread([] {
      TAFileBuffer::ASyncLoad(0, nullptr);
      hasEnded = true;
    }).detach();
    if (!IsParked()) return 1;
    // A child has no loop to end, and exits even if the thread that forked held the lock.
    TAFileBuffer::ASyncLock.GetLock();
    if (InProcess([]() -> int { exit(4); }) != 4) return 2;
    TAFileBuffer::ASyncLock.ReleaseLock();
    // Streams are flushed after all static objects are gone.
    cookie_io_functions_t flush = {};
    flush.write = [](void*, const char*, std::size_t) -> ssize_t {
      _exit(Eventually([] { return hasEnded.load(); }) ? 3 : 5);
    };
    fputs("last", fopencookie(nullptr, "w", flush));
    return 0;
  };
  EXPECT_EXIT(exit(park()), testing::ExitedWithCode(3), "");
}
