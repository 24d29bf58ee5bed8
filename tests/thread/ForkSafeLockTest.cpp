#include "base/ForkSafeLock.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <mutex>
#include <thread>

#include "support/InProcess.h"

namespace {

constinit vor::ForkSafeMutex mutex(vor::ForkStage::kTool);
const vor::ForkRegistration mutexRegistration(mutex);

}  // namespace

// Two threads that use a mutex and fork, with the mutex held and without.
TEST(ForkSafeMutex, ChildFindsItFreeAndItsDataConsistent) {
  static int begun = 0, ended = 0;
  const auto use = [](bool forks) {
    const std::lock_guard outer(mutex);
    ++begun;
    { const std::lock_guard inner(mutex); }
    EXPECT_EQ(forks ? InProcess([] { return begun - ended; }) : 1, 1);
    std::this_thread::yield();
    ++ended;
  };
  const std::jthread other([&](const std::stop_token& stop) {
    for (int i = 0; !stop.stop_requested(); ++i) use(i % 10 == 0);
  });
  const auto look = [] {
    alarm(30);
    const std::lock_guard guard(mutex);
    return begun - ended;
  };
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(InProcess(look), 0);
    use(true);
  }
}
