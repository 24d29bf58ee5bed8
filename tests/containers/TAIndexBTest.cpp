#include "containers/TAIndexB.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <sys/resource.h>
#include <unistd.h>

TEST(TAIndexB, ComparesWordsInReverse) {
  const int rows[][5] = {// two keys of two words, the sign
                         {1, 0, 2, 0, 1},
                         {2, 0, 1, 9, -1},
                         {3, 3, 3, 3, 0},
                         {3, -1, 3, 1, 1},
                         {INT_MIN, 0, INT_MAX, 0, 1}};
  TAIndexB index(2);
  for (const auto& row : rows) {
    int stored[] = {row[2], row[3]};
    EXPECT_EQ(index.compare(row, stored), row[4]) << row[0] << " " << row[2];
  }
}

TEST(TAIndexB, KeepsACopyOfAKeyThatNeedNotBeAligned) {
  TAIndexB index(1);
  char bytes[9] = {0, 1, 2, 3, 4, 1, 2, 3, 4};
  const void* stored = index.Append(bytes + 1, bytes);
  EXPECT_NE(stored, bytes + 1);
  EXPECT_EQ(index.Append(stored, nullptr), stored);
  EXPECT_EQ(index[bytes + 5], bytes);
  EXPECT_EQ(index.IsIn(bytes + 5, 77), 0);
  EXPECT_TRUE(index.Append(nullptr, nullptr) == nullptr && index[nullptr] == nullptr);
  EXPECT_EQ(index.count, 1);
}

TEST(TAIndexB, RefusesAKeyThatCannotBeCopied) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers end the process when memory runs out";
#endif
  const auto appendHuge = [] {
    const rlimit limit = {1u << 30, 1u << 30};
    if (setrlimit(RLIMIT_AS, &limit) != 0) _exit(2);
    TAIndexB index(INT_MAX);  // keys of 8 GB
    const int key = 1;
    const bool isRefused = index.Append(&key, nullptr) == nullptr && index.count == 0;
    _exit(isRefused ? 0 : 1);
  };
  EXPECT_EXIT(appendHuge(), testing::ExitedWithCode(0), "");
}

TEST(TAIndexBDeathTest, KeySizeBelowOneEndsTheProcess) {
  for (const int size : {0, -1}) {
    EXPECT_DEATH(TAIndexB{size}, "Unable to create TAIndexB with sizeofkey < 0 \n");
  }
}
