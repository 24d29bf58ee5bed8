#include "thread/VorThreads.h"

#include <gtest/gtest.h>

#include <atomic>

#include "support/Eventually.h"

namespace {

// Waits for itself, which is refused, and destroys itself if it is told to.
class Selfish : public VorThreads {
 public:
  Selfish() : VorThreads("longer than 15 bytes") {}
  ~Selfish() override { ++destroyed; }

  int Begin(void* isToGo) override {
    if (Wait() == 1) ++refused;
    if (isToGo != nullptr) delete this;
    return 0;
  }

  static inline std::atomic<int> refused{0}, destroyed{0};
};

}  // namespace

TEST(VorThreads, BodyMayWaitAndDestroyItselfAtOnce) {
  int go = 0;
  for (int i = 0; i < 500; ++i) EXPECT_EQ((new Selfish)->Start(&go), 0);
  EXPECT_TRUE(Eventually([] { return Selfish::destroyed == 500; }));
  Selfish owned;
  EXPECT_TRUE(owned.Wait() == 1 && owned.Start() == 0 && owned.Start() == 1);
  EXPECT_TRUE(owned.Wait() == 0 && owned.Wait() == 1);
  EXPECT_EQ(Selfish::refused, 501);
}
