#include "thread/TAThread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/ScopedLock.h"
#include "support/InProcess.h"
#include "thread/TAThreadLock.h"

namespace {

std::atomic<int> calls{0}, deleted{0};

void CountCall(int, const char**) {
  ++calls;
}

// A thread that reports its deletion.
struct Watched : TAThread {
  using TAThread::TAThread;
  ~Watched() override { ++deleted; }
};

}  // namespace

TEST(TAThread, CallsItsFunctionWithTheArguments) {
  static std::string seen;
  TAThread thread;
  testing::internal::CaptureStdout();
  thread.Start();
  TAThread::WaitForAll();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "TAThread::Run No function to run !\n");
  EXPECT_STREQ(thread.SetArgs("gone", nullptr)[0], "gone");
  thread.SetArgs([](int argc, const char** argv) { seen = std::to_string(argc) + argv[1]; }, "a",
                 "b", nullptr, "not this");
  EXPECT_EQ(thread.Start(), 0);
  TAThread::WaitForAll();
  EXPECT_EQ(seen, "2b");

  // A first null counts; the end is a null pointer in any form.
  const char** args = thread.SetArgs(nullptr, printf, CountCall, NULL);
  EXPECT_EQ(args[0], nullptr);
  EXPECT_EQ(args[2], reinterpret_cast<const char*>(CountCall));
  EXPECT_EQ(args[3], nullptr);
}

// Threads that start others, while two threads wait and the owner deletes at once.
TEST(TAThread, WaitsForManyAndForThoseThatTheyStart) {
  calls = 0;
  const std::jthread otherWaiter([](const std::stop_token& stop) {
    while (!stop.stop_requested()) TAThread::WaitForAll();
  });
  for (int round = 0; round < 10; ++round) {
    std::vector<std::unique_ptr<TAThread>> threads;
    for (int i = 0; i < 4; ++i) {
      threads.push_back(std::make_unique<TAThread>([](int, const char**) {
        ++calls;
        (new Watched(CountCall))->StartDetach();
      }));
      EXPECT_EQ(threads.back()->Start(), 0);
    }
    TAThread::WaitForAll();
  }
  EXPECT_EQ(calls, 80);
  EXPECT_EQ(TAThread::running.Size(), 0);
  EXPECT_EQ(TAThread::toDelete.Size(), 0);
}

TEST(TAThread, SecondStartWaitsForTheFirstRun) {
  static std::atomic<int> inside{0}, most{0};
  calls = deleted = 0;
  auto* const thread = new Watched([](int, const char**) {
    if (++inside > most) most = inside.load();
    for (int i = 0; i < 200; ++i) std::this_thread::yield();
    --inside;
    ++calls;
  });
  EXPECT_EQ(thread->Start(), 0);
  EXPECT_EQ(thread->StartDetach(), 0);  // to be deleted after the last run only
  while (deleted < 1) TAThread();       // each of which cleans up
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(most, 1);
}

// The start fails since its stack would be larger than the memory of the machine.
TEST(TAThreadDeathTest, WaitForAllNeverReturnsAfterAFailedStart) {
  const auto failDeleteAndWait = [] {
    auto thread = std::make_unique<TAThread>(CountCall);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 46);
    if (pthread_setattr_default_np(&attributes) != 0 || thread->Start() != 1) _exit(1);
    ualarm(100'000, 0);
    thread.reset();
    TAThread::WaitForAll();
  };
  EXPECT_EXIT(failDeleteAndWait(), testing::KilledBySignal(SIGALRM), "");
}

TEST(TAThread, ForkedChildFindsTheRegistryFreeAndEmpty) {
  static std::atomic<bool> mayEnd{false};
  TAThread thread([](int, const char**) {
    for (; !mayEnd; std::this_thread::yield()) {
      const vor::ScopedLock holder(TAThread::lock);
      std::this_thread::yield();
    }
  });
  thread.Start();
  signal(SIGCHLD, SIG_DFL);  // threads have had it ignored
  const auto waitForNone = [] {
    alarm(30);
    TAThread::WaitForAll();
    return 0;
  };
  for (int i = 0; i < 20; ++i) EXPECT_EQ(InProcess(waitForNone), 0);
  mayEnd = true;
  TAThread::WaitForAll();
}

TEST(TAThread, ThreadThatRunsDuringExitIsHarmless) {
  signal(SIGCHLD, SIG_DFL);
  const auto forkAtExit = [] {
    static std::atomic<bool> mayEnd{false};
    (new TAThread([](int, const char**) {
      while (!mayEnd) continue;
    }))->Start();
    TAThread::exitCalled();
    TAThread::lock.GetLock();  // kept, as by a thread that has finished before this one
    mayEnd = true;
    alarm(30);
    signal(SIGCHLD, SIG_DFL);
    return InProcess([] { return 0; });
  };
  EXPECT_EQ(InProcess(forkAtExit), 0);
}
