#include "thread/TAThread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "support/InProcess.h"

namespace {

std::atomic<int> calls{0}, deleted{0};

void CountCall(int, const char**) {
  ++calls;
}

// A thread that tells when it is deleted.
struct Watched : TAThread {
  Watched() : TAThread(CountCall) {}
  ~Watched() override { ++deleted; }
};

}  // namespace

TEST(TAThread, GivesItsFunctionTheArgumentsOrSaysThatItHasNone) {
  static std::string seen;
  TAThread thread;
  testing::internal::CaptureStdout();
  thread.Start();
  TAThread::WaitForAll();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "TAThread::Run No function to run !\n");
  EXPECT_STREQ(thread.SetArgs("gone", nullptr)[0], "gone");
  const char** args = thread.SetArgs(
      [](int argc, const char** argv) {
        seen = std::to_string(argc) + argv[0] + argv[1] + (argv[2] == nullptr ? "|" : argv[2]);
      },
      "a", "b", nullptr, "not this");
  EXPECT_TRUE(std::string(args[1]) == "b" && args[2] == nullptr);
  EXPECT_EQ(thread.Start(), 0);
  TAThread::WaitForAll();
  EXPECT_EQ(seen, "2ab|");

  TAThread second([](int argc, const char** argv) { calls = argv[0] == nullptr ? argc : 9; });
  args = second.SetArgs(nullptr, NULL);  // counts; the end is a null pointer in any form
  EXPECT_TRUE(args[0] == nullptr && args[1] == nullptr);
  second.Start();
  TAThread::WaitForAll();
  EXPECT_EQ(calls, 1);
}

TEST(TAThread, WaitsForManyAndForThoseThatTheyStart) {
  calls = 0;
  TAThread::WaitForAll();  // for none
  std::vector<std::unique_ptr<TAThread>> threads;
  for (int i = 0; i < 20; ++i) {
    threads.push_back(std::make_unique<TAThread>([](int, const char**) {
      ++calls;
      (new TAThread(CountCall))->StartDetach();
    }));
    EXPECT_EQ(threads.back()->Start(), 0);
  }
  TAThread::WaitForAll();
  EXPECT_EQ(calls, 40);
}

TEST(TAThread, DeletesTheDetachedOnes) {
  for (int i = 0; i < 5; ++i) EXPECT_EQ((new Watched)->StartDetach(), 0);
  TAThread::WaitForAll();
  EXPECT_EQ(deleted, 5);

  calls = 0;
  (new Watched)->StartDetach();
  while (deleted < 6) TAThread();  // each of which cleans up
  EXPECT_EQ(calls, 1);
}

TEST(TAThread, TellsWhenThereIsNoThreadToBeHad) {
  signal(SIGCHLD, SIG_DFL);  // earlier threads have had it ignored
  EXPECT_EQ(InProcess([] {
              pthread_attr_t attributes;  // a stack larger than the memory of the machine
              pthread_attr_init(&attributes);
              pthread_attr_setstacksize(&attributes, std::size_t{1} << 46);
              if (pthread_setattr_default_np(&attributes) != 0) return 2;
              return TAThread(CountCall).Start();
            }),
            1);
}

TEST(TAThread, ThoseThatOutliveTheProcessLeaveItInPeace) {
  signal(SIGCHLD, SIG_DFL);
  EXPECT_EQ(InProcess([] {
              calls = 0;
              TAThread::exitCalled();
              (new TAThread(CountCall))->Start();
              // It keeps the account locked, so nothing may be asked of it any more.
              while (calls == 0) continue;
              return 0;
            }),
            0);
}
