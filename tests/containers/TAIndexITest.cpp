#include "containers/TAIndexI.h"

#include <gtest/gtest.h>
#include <limits.h>

#include <vector>

TEST(TAIndexI, OrdersIntsToTheirExtremes) {
  TAIndexI index;
  for (const int key : {0, INT_MAX, -1, INT_MIN, 0}) EXPECT_EQ(index.Append(key, nullptr), key);
  EXPECT_EQ(std::vector<int>(index.keys, index.keys + index.count),
            (std::vector<int>{INT_MIN, -1, 0, INT_MAX}));
  EXPECT_EQ(index.IsIn(INT_MIN), 0);
  EXPECT_EQ(index.IsIn(INT_MAX), 3);
  for (int i = 0; i < 15; ++i) index.Append(i, nullptr);
  index.Reset();
  EXPECT_EQ(index.capacity, 20);  // kept
}
