#include "containers/TAIndexB.h"

#include <gtest/gtest.h>

TEST(TAIndexB, KeepsACopyOfAKeyThatNeedNotBeAligned) {
  TAIndexB index(1);
  char bytes[9] = {0, 1, 2, 3, 4, 1, 2, 3, 4};
  const void* stored = index.Append(bytes + 1, bytes);
  EXPECT_NE(stored, bytes + 1);
  EXPECT_EQ(index.Append(stored, nullptr), stored);
  EXPECT_EQ(index[bytes + 5], bytes);
  EXPECT_EQ(index.IsIn(bytes + 5, 77), 0);
  EXPECT_EQ(index.Append(nullptr, nullptr), nullptr);
  EXPECT_EQ(index[nullptr], nullptr);
  EXPECT_EQ(index.count, 1);
}

TEST(TAIndexBDeathTest, KeySizeBelowOneEndsTheProcess) {
  for (const int size : {0, -1}) {
    EXPECT_DEATH(TAIndexB{size}, "Unable to create TAIndexB with sizeofkey < 0 \n");
  }
}
