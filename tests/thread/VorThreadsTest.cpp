#include "thread/VorThreads.h"

#include <gtest/gtest.h>

#include <atomic>

#include "support/Eventually.h"

namespace {

// Waits for itself, which is refused, and destroys itself if its argument is not null.
class Selfish : public VorThreads {
 public:
  Selfish() : VorThreads("longer than 15 bytes") {}
  ~Selfish() override { ++destroyed; }

  int Begin(void* isToGo) override {
    EXPECT_EQ(Wait(), 1);
    if (isToGo != nullptr) delete this;
    return 0;
  }

  static inline std::atomic<int> destroyed{0};
};

}  // namespace

TEST(VorThreads, BeginMayWaitAndDestroyTheObject) {
  int go = 0;
  for (int i = 0; i < 500; ++i) EXPECT_EQ((new Selfish)->Start(&go), 0);
  EXPECT_TRUE(Eventually([] { return Selfish::destroyed == 500; }));
  Selfish owned;
  EXPECT_EQ(owned.Wait(), 1);
  EXPECT_EQ(owned.Start(), 0);
  EXPECT_EQ(owned.Start(), 1);
  EXPECT_EQ(owned.Wait(), 0);
  EXPECT_EQ(owned.Wait(), 1);
}
