#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "thread/TAThreadLock.h"
#include "thread/TAThreadLongLock.h"
#include "thread/TAThreadRWLock.h"

namespace {

template <typename Take, typename Release>
long CountTogether(Take take, Release release) {
  long count = 0;
  const auto work = [&] {
    for (int i = 0; i < 2000; ++i) {
      EXPECT_EQ(take(), 1);
      ++count;
      EXPECT_EQ(release(), 1);
    }
  };
  std::thread other(work);
  work();
  other.join();
  return count;
}

void WaitFor(const std::atomic<bool>& flag) {
  while (!flag) std::this_thread::yield();
}

}  // namespace

TEST(Locks, ExcludeOtherThreads) {
  const std::unique_ptr<TAThreadLock> locks[] = {std::make_unique<TAThreadLock>(),
                                                 std::make_unique<TAThreadLongLock>()};
  for (const auto& lock : locks) {
    EXPECT_EQ(CountTogether([&] { return lock->GetLock(); }, [&] { return lock->ReleaseLock(); }),
              4000);
  }
  TAThreadRWLock writers;
  EXPECT_EQ(CountTogether([&] { return writers.GetWriteLock(); },
                          [&] { return writers.ReleaseWriteLock(); }),
            4000);
}

TEST(TAThreadRWLock, LetsReadersInTogetherAndNeverWithAWriter) {
  TAThreadRWLock lock;
  lock.GetLock();
  std::thread([&] { EXPECT_EQ(lock.GetLock() + lock.ReleaseLock(), 2); }).join();
  lock.ReleaseLock();

  int value = 0, seen = 0;
  std::thread writer([&] {
    for (int i = 0; i < 1000; ++i) {
      lock.GetWriteLock();
      ++value;
      ++value;
      lock.ReleaseWriteLock();
    }
  });
  while (seen < 2000) {
    lock.GetLock();
    seen = value;
    EXPECT_EQ(seen % 2, 0);
    lock.ReleaseLock();
  }
  writer.join();
}

TEST(TAThreadRWLock, AWaitingWriterGoesBeforeLaterReaders) {
  TAThreadRWLock lock;
  std::atomic<bool> isWriting{false}, hasWritten{false}, readerIsIn{false};
  lock.GetLock();
  std::thread writer([&] {
    isWriting = true;
    lock.GetWriteLock();
    EXPECT_FALSE(readerIsIn);
    hasWritten = true;
    lock.ReleaseWriteLock();
  });
  WaitFor(isWriting);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the writer is at the turnstile
  std::thread reader([&] {
    lock.GetLock();
    readerIsIn = true;
    EXPECT_TRUE(hasWritten);
    lock.ReleaseLock();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(readerIsIn || hasWritten);
  lock.ReleaseLock();
  writer.join();
  reader.join();
}

TEST(ArenaDeathTest, IsMadeOnceAndRemovedByItsMaker) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a new process image has no lock yet
  const auto makeAndExit = [] {
    const std::string arena = "/tmp/TABaseArena_" + std::to_string(getpid());
    const TAThreadLock first, second;
    bool isThere = access(arena.c_str(), F_OK) == 0;
    if (fork() == 0) exit(0);  // leaves alone what it has inherited
    wait(nullptr);
    isThere = isThere && access(arena.c_str(), F_OK) == 0;
    fprintf(stderr, "%s", arena.c_str());
    exit(isThere ? 0 : 1);
  };
  const auto isGone = [](const std::string& arena) {
    return arena.starts_with("/tmp/TABaseArena_") && access(arena.c_str(), F_OK) != 0;
  };
  EXPECT_EXIT(makeAndExit(), testing::ExitedWithCode(0), testing::Truly(isGone));
}
