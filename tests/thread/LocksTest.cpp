#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "support/Eventually.h"
#include "support/InProcess.h"
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

TEST(TAThreadRWLock, LetsReadersInTogether) {
  TAThreadRWLock lock;
  lock.GetLock();
  std::thread([&] { EXPECT_EQ(lock.GetLock(), 1); }).join();
  EXPECT_EQ(lock.ReleaseLock(), 1);
}

// Two readers, of whom one is always inside for as long as the lock lets the other one in.
TEST(TAThreadRWLock, ReadersNeitherStarveNorOverlapWriters) {
  TAThreadRWLock lock;
  bool isWriting = false;  // under the lock
  std::atomic<int> entries{0};
  std::atomic<bool> hasWritten{false};
  const auto read = [&](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      lock.GetLock();
      const int mine = ++entries;
      for (int i = 0; i < 20 && entries == mine; ++i) std::this_thread::yield();
      EXPECT_FALSE(isWriting);
      lock.ReleaseLock();
    }
  };
  const std::jthread writer([&] {
    for (int i = 1; i <= 3; ++i) {
      while (entries < 10 * i) std::this_thread::yield();
      lock.GetWriteLock();
      isWriting = true;
      std::this_thread::yield();
      isWriting = false;
      lock.ReleaseWriteLock();
    }
    hasWritten = true;
  });
  const std::jthread first(read), second(read);
  EXPECT_TRUE(Eventually([&] { return hasWritten.load(); }));
}

namespace {

bool IsArenaThere() {
  struct stat info;
  const std::string arena = "/tmp/TABaseArena_" + std::to_string(getpid());
  return lstat(arena.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size == 4096;
}

// Makes locks in a new process image, which has none yet, after \a plant has put something in the
// place of the arena.  Prints the path of the arena and exits with 1 if there was one.
template <typename Plant>
[[noreturn]] void MakeLocks(Plant plant) {
  const std::string arena = "/tmp/TABaseArena_" + std::to_string(getpid());
  unlink(arena.c_str());  // what an earlier process with this number has left
  const auto isMadeByLock = [] {
    const bool isOld = IsArenaThere();
    const TAThreadLock lock;
    return IsArenaThere() && !isOld;
  };
  if (InProcess(isMadeByLock) != 0) exit(2);
  plant(arena.c_str());
  const TAThreadLock first, second;
  if (fork() == 0) exit(0);  // leaves alone what it has inherited
  wait(nullptr);
  fprintf(stderr, "%s", arena.c_str());
  exit(IsArenaThere() ? 1 : 0);
}

}  // namespace

TEST(ArenaDeathTest, IsCreatedOrReusedUnlessAnotherUserMayOwnIt) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  static constexpr struct {
    const char* there;
    void (*plant)(const char* path);
    int isMade;
  } kRows[] = {
      {"nothing", [](const char*) {}, 1},
      {"left by a killed process", [](const char* path) { close(creat(path, 0600)); }, 1},
      {"in use", [](const char* path) { flock(creat(path, 0600), LOCK_EX); }, 0},
      {"link", [](const char* path) { EXPECT_EQ(symlink("/dev/null", path), 0); }, 0},
      {"one of two names",
       [](const char* path) {
         close(creat(path, 0600));
         EXPECT_EQ(link(path, (std::string(path) + "_").c_str()), 0);
       },
       0},
  };
  for (const auto& row : kRows) {
    const auto isRemovedByItsMaker = [&row](const std::string& arena) {
      remove((arena + "_").c_str());
      return (remove(arena.c_str()) != 0) == (row.isMade == 1);
    };
    EXPECT_EXIT(MakeLocks(row.plant), testing::ExitedWithCode(row.isMade),
                testing::Truly(isRemovedByItsMaker))
        << row.there;
  }
}
