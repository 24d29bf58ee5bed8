#include "containers/TAComponent.h"

#include <gtest/gtest.h>

#include "base/VorListValVorString.h"

namespace {

TEST(TAComponent, IsADictionaryWithAName) {
  TAComponent component;
  component.SetName("tools");
  EXPECT_STREQ(component.GetName(), "tools");

  int first = 0;
  EXPECT_EQ(component.Insert("k", &first), 0);
  EXPECT_EQ(component.Insert(VorString("k"), nullptr), 1);
  EXPECT_EQ(component.GetValue(VorString("k")), &first);
  EXPECT_EQ(component.IsIn(VorString("other")), 0);
  EXPECT_EQ(component.Insert(static_cast<const char*>(nullptr), &first), 1);
  component.Insert("a", nullptr);
  component.Remove("k");
  EXPECT_EQ(component.GetSize(), 1);
  component.Clear();
  EXPECT_EQ(component.IsIn("a"), 0);
}

// "b" and "z" are in the buckets 8 and 2 of 30, "a" is in 7.
TEST(TAComponent, ListsKeysSortedAndDumpsThemInMapOrder) {
  TAComponent component;
  for (const char* key : {"b", "a", "z"}) component.Insert(key, nullptr);
  VorListValVorString keys;
  keys.Append("old");
  EXPECT_EQ(component.GetList(keys), 3);
  EXPECT_STREQ(keys[1], "a");
  EXPECT_STREQ(keys[3], "z");

  testing::internal::CaptureStdout();
  component.DumpKeys();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "   z\n   a\n   b\n");
  EXPECT_EQ(component.GetIteratorRef(), component.GetIteratorRef());
}

}  // namespace
