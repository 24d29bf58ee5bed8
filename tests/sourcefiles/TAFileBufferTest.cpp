#include "sourcefiles/TAFileBuffer.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "base/NamedLists.h"
#include "filenames/TAFileName.h"
#include "support/Eventually.h"
#include "support/InProcess.h"
#include "support/TempDir.h"
#include "thread/TAThreadLock.h"

namespace {

bool IsParked() {
  return Eventually([] { return TAFileBuffer::ASyncLoadRunning == -1; });
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

  TAFileBuffer empty(dir.Write("empty", "").c_str(), 0);
  EXPECT_STREQ(empty.GetBuffer(), "");
  for (const std::string& name : {dir / "missing", dir.Path()}) {
    TAFileBuffer unreadable(name.c_str(), 0);
    EXPECT_EQ(unreadable.LoadFile(), 1);
    dir.Write("missing", "too late");
    EXPECT_EQ(unreadable.LoadFile(), 0);
    EXPECT_TRUE(unreadable.GetBuffer() == nullptr && unreadable.GetSize() == 0);
  }
}

TEST(TAFileBuffer, SavesInPlaceOfWhatIsThere) {
  const TempDir dir;
  const std::string source = dir.Write("source", "text");
  TAFileName target(dir.Write("target", "longer text").c_str()), own(source.c_str());
  TAFileName nowhere((dir / "missing/target").c_str());
  TAFileBuffer buffer(source.c_str(), 0);
  EXPECT_EQ(buffer.SaveAs(nowhere), 1);
  EXPECT_EQ(buffer.SaveAs(own), 0);
  EXPECT_EQ(dir.Read("source"), "text");
  EXPECT_EQ(buffer.SaveAs(target), 0);
  EXPECT_EQ(dir.Read("target"), "text");
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
  TAFileBuffer::ASyncLoadRunning = 1;
  TAFileBuffer::ASyncPause.ReleaseLock();
  TAFileBuffer::ASyncLock.ReleaseLock();
  EXPECT_TRUE(Eventually([] { return TAFileBuffer::ASyncOverloadFlag == 1; }));
  EXPECT_EQ(TAFileBuffer::ASyncBufferSize, 0x9C4001);

  TAFileBuffer::ASyncLock.GetLock();
  list[1] = &second;
  TAFileBuffer::ASyncBufferSize = 0;
  TAFileBuffer::ASyncOverloadLock.ReleaseLock();
  TAFileBuffer::ASyncLock.ReleaseLock();
  EXPECT_TRUE(Eventually([] { return TAFileBuffer::ASyncBufferSize == 2; }));

  TAFileBuffer::ASyncLock.GetLock();
  list.RemoveAll(VorCollec::ReleaseMemory);
  TAFileBuffer::ASyncLock.ReleaseLock();
  ASSERT_TRUE(IsParked());
  TAFileBuffer::ASyncCleanup();
  loop.join();
  EXPECT_EQ(TAFileBuffer::ASyncLoadRunning, 0);
  TAFileBuffer::ASyncLoadList = nullptr;
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
    // A child made by fork has no loop to end, and exits even if the lock was held at that time.
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
