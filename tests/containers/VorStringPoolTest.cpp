#include "containers/VorStringPool.h"

#include <gtest/gtest.h>
#include <string.h>

#include <string>

namespace {

TEST(VorStringPool, AllocatesABlockFrontToBack) {
  VorStringPool pool;
  char* first = pool.alloc(3);
  EXPECT_EQ(pool.alloc(0), first + 3);
  char* second = pool.create("text");
  EXPECT_EQ(second, first + 3);
  EXPECT_STREQ(second, "text");
  char* rest = pool.alloc(65532 - 8);
  EXPECT_EQ(rest, first + 8);
  memset(rest, 'x', 65532 - 8);
  char* opened = pool.alloc(1);  // the first block is used up to its last byte
  *opened = 'y';
  EXPECT_EQ(rest[65532 - 9], 'x');

  pool.clear();
  memset(pool.alloc(65532), 'z', 65532);
}

TEST(VorStringPool, RefusesRunsLargerThanABlock) {
  VorStringPool pool;
  testing::internal::CaptureStdout();
  EXPECT_EQ(pool.alloc(-1), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "# Error : unable to allocate in VorStringPoolAlloc (string too long: -1)");
  EXPECT_NE(pool.create(std::string(65531, 'a').c_str()), nullptr);
}

}  // namespace
