#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "thread/TAThreadLock.h"
#include "thread/TAThreadLongLock.h"
#include "thread/TAThreadRWLock.h"

namespace {

// Whether the lock lets one thread in at a time.
template <typename Take, typename Release>
void ExpectExclusion(Take take, Release release) {
  long count = 0;
  std::atomic<int> started{0};
  const auto work = [&] {
    for (++started; started < 2;) std::this_thread::yield();
    for (int i = 0; i < 2000; ++i) {
      EXPECT_EQ(take(), 1);
      const long seen = count;
      if (i % 100 == 0) std::this_thread::yield();  // the best moment for the other one to get in
      count = seen + 1;
      EXPECT_EQ(release(), 1);
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(count, 4000);
}

}  // namespace

TEST(Locks, ExcludeOtherThreads) {
  TAThreadLock simple;
  TAThreadLongLock longer;
  for (TAThreadLock* lock : {&simple, static_cast<TAThreadLock*>(&longer)}) {
    ExpectExclusion([&] { return lock->GetLock(); }, [&] { return lock->ReleaseLock(); });
  }
  TAThreadRWLock lock;
  ExpectExclusion([&] { return lock.GetWriteLock(); }, [&] { return lock.ReleaseWriteLock(); });
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
      ++value, ++value;
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
  while (!isWriting) std::this_thread::yield();
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
    const bool isEarly = access(arena.c_str(), F_OK) == 0;
    const TAThreadLock first, second;
    bool isThere = !isEarly && access(arena.c_str(), F_OK) == 0;
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
