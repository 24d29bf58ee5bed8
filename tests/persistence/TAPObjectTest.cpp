#include "persistence/TAPObject.h"

#include <gtest/gtest.h>
#include <limits.h>

#include <deque>
#include <string>
#include <tuple>
#include <utility>

namespace {

std::string PathOf(const TAPObject& object) {
  std::string text;
  TAPPath* const path = object.GetPath();
  for (int i = 1; path != nullptr && i <= path->Size(); ++i) {
    TAPName* const name = (*path)[i];
    text += std::string("/") + name->GetName();
    name->Release();
  }
  if (path != nullptr) path->Release();
  return text;
}

TEST(TAPObject, WalksItsAttributesInOrder) {
  TAPObject object;
  EXPECT_EQ(object.GetFirstAttributePosition(), 0);
  for (const char* name : {"b", "a", "\xe9", "c"}) object.SetAttribute(name, name);
  std::string names;
  for (int p = object.GetFirstAttributePosition(); p != 0;) {
    const char* name = nullptr;
    const VorString value = object.GetNextAttribute(p, name).GetString();
    EXPECT_STREQ(value, name);
    names += name;
  }
  EXPECT_EQ(names, "abc\xe9");
  for (int outside : {INT_MIN, 0, 5, INT_MAX}) {
    EXPECT_TRUE(object.GetNextAttribute(outside).IsType(0));
    EXPECT_EQ(outside, 0);
  }
}

TEST(TAPObject, FindsReplacesAndRemoves) {
  TAPObject object;
  object.SetAttribute("name", 1);
  EXPECT_TRUE(object.GetAttribute("missing").IsType(0));
  EXPECT_EQ(object.HasAttribute("named", 4), 1);
  EXPECT_EQ(object.HasAttribute("named", 5), 0);
  EXPECT_EQ(object.RemoveAttribute("missing"), 1);
  const char* const own = object.GetAttributeList().keys[0];
  object.SetAttribute(own, 3);
  EXPECT_EQ(object.AppendToAttribute(own, 4), 0);
  EXPECT_EQ(object.GetAttribute("name").GetInteger(), 7);
  EXPECT_EQ(object.RemoveAttribute(own), 0);
  object.SetAttribute(nullptr, 1);
  EXPECT_EQ(object.AppendToAttribute(nullptr, 1), 1);
  EXPECT_EQ(object.HasAttribute(nullptr), 0);
  EXPECT_EQ(object.GetAttributeList().count, 0);
}

TEST(TAPObject, AppendsByTheTypeOfTheExistingValue) {
  TAPObject child, object;
  const TAFileName file("f");
  const std::tuple<TAPAttr, TAPAttr, int, TAPAttr> rows[] = {
      // what is there, what is added, the result, what is there then
      {40, 2, 0, 42},        {INT_MAX, 1, 0, INT_MIN}, {"ab", "c", 0, "abc"},
      {file, file, 1, file}, {&child, 1, 1, &child},   {TAPAttr(), 1, 1, TAPAttr()},
  };
  for (const auto& [stored, added, result, then] : rows) {
    object.SetAttribute("n", stored);
    EXPECT_EQ(object.AppendToAttribute("n", added), result);
    EXPECT_TRUE(object.GetAttribute("n") == then);
  }
  EXPECT_EQ(object.AppendToAttribute("list", 2), 0);
  EXPECT_EQ(object.AppendToAttribute("list", object.GetAttribute("list")), 0);
  TAPAttr list = object.GetAttribute("list");
  EXPECT_EQ(list.GetList()[1].GetInteger(), 2);
  EXPECT_EQ(list.GetList()[2].GetList().Size(), 1);
  object.SetAttribute("text", "");
  EXPECT_DEATH(object.AppendToAttribute("text", 1), "TAPAttr::GetString : bad type for get");
}

TEST(TAPObject, SetsThePathOfAChildWhenItIsPlaced) {
  TAPObject grandchild, child, root;
  EXPECT_EQ(root.GetPath(), nullptr);
  child.SetAttribute("below", &grandchild);
  root.SetAttribute("a", &child);
  EXPECT_EQ(PathOf(child), "/a");
  EXPECT_EQ(PathOf(grandchild), "/below");  // its parent moved later
  child.SetAttribute("child", &grandchild);
  EXPECT_EQ(PathOf(grandchild), "/a/child");  // of the last placement
  root.SetAttribute("self", &root);
  root.RemoveAttribute("self");
  EXPECT_EQ(PathOf(root), "/self");
}

TEST(TAPObject, ReleasesTreesDeeperThanTheStack) {
  constexpr int kDepth = 200000;
  TAPAttr tree, list = VorListValTAPAttr();
  for (int i = 0; i < kDepth; ++i) {
    auto* const parent = new TAPObject;
    parent->SetAttribute("child", std::exchange(tree, TAPAttr()));
    tree = parent;
    parent->Release();
  }
  VorListValTAPAttr* innermost = &list.GetList();
  for (int i = 0; i < kDepth; ++i) {
    innermost->Append(VorListValTAPAttr());
    innermost = &(*innermost)[1].GetList();
  }
}

TEST(TAPPath, FindsEachNameOfALongPath) {
  std::deque<TAPName> names;
  std::deque<TAPPath> paths;
  for (std::size_t size = 1; size <= 200; ++size) {
    TAPName* const last = &names.emplace_back("");
    const TAPPath& path =
        size == 1 ? paths.emplace_back(last) : paths.emplace_back(&paths.back(), last);
    for (std::size_t i = 0; i < size; ++i) {
      TAPName* const found = path[static_cast<int>(i) + 1];
      found->Release();
      ASSERT_EQ(found, &names[i]) << size;
    }
  }
  const TAPPath copy(paths[1]);
  EXPECT_EQ(copy.Size(), 2);
  for (int i : {0, 3}) EXPECT_DEATH(copy[i], "\nTAPPath::\\[\\] : bad index\n");
}

// This one has nothing to look at but the counts: an object with a reference too many or too few
// ends the process when it is destroyed.
TEST(TAPObject, HoldsItsPathAndItsValues) {
  TAPName childName("child");
  auto* const path = new TAPPath(&childName);
  TAPObject leaf, child, root;
  root.SetPath(path);
  path->Release();
  root.SetPath(path);  // the only reference is its own
  child.SetAttribute("number", 1);
  child.SetAttribute("leaf", &leaf);
  root.SetAttribute("child", &child);
  root.SetAttribute("child", root.GetAttribute("child"));
  root.AppendToAttribute("list", &child);
  for (const char* last : {"leaf", "number", "missing"}) {
    TAPName name(last);
    TAPPath walk(path, &name);
    EXPECT_EQ(root.GetObject(&walk), nullptr);
  }
  EXPECT_EQ(root.GetObject(nullptr), nullptr);
  leaf.Release();  // what the walk that reached it left
}

}  // namespace
