#include "persistence/TAPObject.h"

#include <gtest/gtest.h>
#include <limits.h>

#include <string>
#include <tuple>

#include "persistence/Probe.h"

namespace {

std::string Text(const TAPPath* path) {
  std::string text;
  for (int i = 1; path != nullptr && i <= path->Size(); ++i) {
    TAPName* const name = (*path)[i];
    text += std::string("/") + name->GetName();
    name->Release();
  }
  return text;
}

std::string PathText(const TAPObject& object) {
  TAPPath* const path = object.GetPath();
  const std::string text = Text(path);
  if (path != nullptr) path->Release();
  return text;
}

TEST(TAPPath, SharesItsNamesWithItsCopies) {
  bool alive = false;
  auto* const name = new Probe<TAPName>(alive, "a");
  auto* const path = new TAPPath(name);
  auto* const longer = new TAPPath(path, name);
  auto* const copy = new TAPPath(*longer);
  path->Release();
  longer->Release();
  EXPECT_EQ(Text(copy), "/a/a");
  EXPECT_DEATH((*copy)[0], "\nTAPPath::\\[\\] : bad index\n");
  EXPECT_DEATH((*copy)[3], "\nTAPPath::\\[\\] : bad index\n");
  copy->Release();
  EXPECT_EQ(name->CountDown(), 1);
}

TEST(TAPObject, WalksItsAttributesInOrder) {
  TAPObject object;
  EXPECT_EQ(object.GetFirstAttributePosition(), 0);
  for (const char* name : {"b", "a", "\xe9", "c"}) object.SetAttribute(name, name);
  std::string names;
  const char* name = nullptr;
  for (int p = object.GetFirstAttributePosition(); p != 0;) {
    const VorString value = object.GetNextAttribute(p, name).GetString();
    EXPECT_STREQ(value, name);
    names += name;
  }
  EXPECT_EQ(names, "abc\xe9");
  for (int outside : {INT_MIN, 0, 5, INT_MAX}) {
    EXPECT_TRUE(object.GetNextAttribute(outside).IsType(TAPAttr::NullType));
    EXPECT_EQ(outside, 0);
  }
}

TEST(TAPObject, FindsReplacesAndRemoves) {
  TAPObject object;
  object.SetAttribute("name", 1);
  object.SetAttribute("name", 2);
  EXPECT_EQ(object.GetAttribute("name").GetInteger(), 2);
  EXPECT_TRUE(object.GetAttribute("missing").IsType(TAPAttr::NullType));
  EXPECT_EQ(object.HasAttribute("name") + object.HasAttribute("named", 4), 2);
  EXPECT_EQ(object.HasAttribute("nam") + object.HasAttribute("named", 5), 0);
  EXPECT_EQ(object.RemoveAttribute("missing"), 1);
  // By the object's own copy of the name.
  int first = 1;
  const char* name = nullptr;
  object.GetNextAttribute(first, name);
  object.SetAttribute(name, 3);
  EXPECT_EQ(object.AppendToAttribute(name, 4), 0);
  EXPECT_EQ(object.GetAttribute("name").GetInteger(), 7);
  EXPECT_EQ(object.RemoveAttribute(name), 0);
  EXPECT_EQ(object.GetAttributeList().count, 0);

  object.SetAttribute(nullptr, 1);
  EXPECT_EQ(object.AppendToAttribute(nullptr, 1), 1);
  EXPECT_EQ(object.HasAttribute(nullptr) + object.GetAttributeList().count, 0);
}

TEST(TAPObject, AppendsByTheTypeThatIsThere) {
  TAPObject child, object;
  TAFileName file("f");
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

TEST(TAPObject, TellsAChildItsPathWhenItIsPlaced) {
  TAPObject grandchild, child, root;
  EXPECT_EQ(root.GetPath(), nullptr);
  child.SetAttribute("below", &grandchild);
  root.SetAttribute("a", &child);
  EXPECT_EQ(PathText(child), "/a");
  EXPECT_EQ(PathText(grandchild), "/below");  // not told that its parent moved
  child.SetAttribute("child", &grandchild);
  EXPECT_EQ(PathText(grandchild), "/a/child");  // of the last placement
  root.SetAttribute("a", 0);
  EXPECT_EQ(PathText(child), "/a");
  root.SetAttribute("null", static_cast<TAPObject*>(nullptr));
  EXPECT_EQ(root.GetAttribute("null").GetObject(), nullptr);
  EXPECT_EQ(PathText(root), "");

  root.SetAttribute("self", &root);
  EXPECT_EQ(PathText(root), "/self");
  root.RemoveAttribute("self");
}

TEST(TAPObject, HoldsItsPathAndItsValuesOnce) {
  bool pathAlive = false, childAlive = false;
  TAPName name("a");
  auto* const path = new Probe<TAPPath>(pathAlive, &name);
  auto* const child = new Probe<TAPObject>(childAlive);
  {
    TAPObject object;
    object.SetPath(path);
    path->Release();
    object.SetPath(path);  // the only reference is its own
    object.GetPath();      // 2, kept
    object.SetAttribute("child", child);
    object.SetAttribute("child", object.GetAttribute("child"));
    object.AppendToAttribute("list", child);
    EXPECT_EQ(PathText(*child), "/a/child");
  }
  EXPECT_EQ(path->CountDown(), 1);
  EXPECT_EQ(child->CountDown(), 1);
}

TEST(TAPObject, KeepsTheReferenceOfACompleteWalkOnly) {
  bool rootAlive = false, childAlive = false, leafAlive = false;
  auto* const root = new Probe<TAPObject>(rootAlive);
  auto* const child = new Probe<TAPObject>(childAlive);
  auto* const leaf = new Probe<TAPObject>(leafAlive);
  root->SetAttribute("child", child);
  root->SetAttribute("number", 1);
  child->SetAttribute("leaf", leaf);
  const auto walk = [root](TAPObject* to) {
    TAPPath* const path = to->GetPath();
    EXPECT_EQ(root->GetObject(path), nullptr);
    path->Release();
  };
  walk(leaf);
  for (const char* missing : {"number", "missing"}) {
    TAPObject end, stray, parent;  // elsewhere, for paths that lead to nothing from the root
    parent.SetAttribute("child", &stray);
    stray.SetAttribute(missing, &end);
    walk(&end);
  }
  EXPECT_EQ(root->GetObject(nullptr), nullptr);
  EXPECT_EQ(root->CountDown(), 1);
  EXPECT_EQ(child->CountDown(), 1);
  EXPECT_EQ(leaf->CountDown(), 2);
}

}  // namespace
