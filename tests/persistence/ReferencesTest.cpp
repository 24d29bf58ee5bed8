#include <gtest/gtest.h>

#include "persistence/TAPObject.h"

namespace {

// A shared object, made with new, that tells how many references are held on it.
template <typename Shared>
class Probe : public Shared {
 public:
  using Shared::Shared;
  ~Probe() override { *_isGone = true; }

  // Releases all references, so nobody else may use what they held.
  int CountDown() {
    bool isGone = false;
    _isGone = &isGone;
    int count = 0;
    for (; !isGone; ++count) this->Release();
    return count;
  }

 private:
  bool* _isGone = nullptr;  // an object that goes too early ends the test
};

TEST(References, AValueHoldsOneForEachCopy) {
  auto* const object = new Probe<TAPObject>;
  {
    const TAPAttr value(object);
    value.GetObject();                       // 2, kept
    value.GetObject(nullptr);                // 3, kept
    TAPAttr("no object").GetObject(object);  // 4, kept
    VorListValTAPAttr list;
    list.Append(value);
    TAPAttr copy(value), moved(list);
    copy = moved;
    moved = TAPAttr(std::move(copy));
  }
  EXPECT_EQ(object->CountDown(), 4);
  EXPECT_EQ(TAPAttr(1).GetObject(nullptr), nullptr);
}

TEST(References, APathHoldsItsNames) {
  auto* const name = new Probe<TAPName>("a");
  {
    TAPPath path(name), longer(&path, name), copy(longer);
    EXPECT_STREQ(copy[2]->GetName(), "a");  // 2, kept
    EXPECT_DEATH(copy[0], "\nTAPPath::\\[\\] : bad index\n");
    EXPECT_DEATH(copy[3], "\nTAPPath::\\[\\] : bad index\n");
  }
  EXPECT_EQ(name->CountDown(), 2);
}

TEST(References, AnObjectHoldsItsPathAndItsValues) {
  TAPName name("a");
  auto* const path = new Probe<TAPPath>(&name);
  auto* const child = new Probe<TAPObject>;
  {
    TAPObject object;
    object.SetPath(path);
    path->Release();
    object.SetPath(path);       // the only reference is its own
    TAPAttr(object.GetPath());  // 2, kept
    object.SetAttribute("child", child);
    object.SetAttribute("child", object.GetAttribute("child"));
    object.AppendToAttribute("list", child);
  }
  EXPECT_EQ(path->CountDown(), 1);
  EXPECT_EQ(child->CountDown(), 1);
}

TEST(References, ACompleteWalkLeavesOneBehind) {
  TAPObject root;
  auto* const child = new Probe<TAPObject>;
  auto* const leaf = new Probe<TAPObject>;
  root.SetAttribute("child", child);
  child->SetAttribute("number", 1);
  child->SetAttribute("leaf", leaf);
  TAPName childName("child");
  TAPPath toChild(&childName);
  for (const char* last : {"leaf", "number", "missing"}) {
    TAPName name(last);
    TAPPath path(&toChild, &name);
    EXPECT_EQ(root.GetObject(&path), nullptr);
  }
  EXPECT_EQ(root.GetObject(nullptr), nullptr);
  root.RemoveAttribute("child");
  EXPECT_EQ(child->CountDown(), 1);
  EXPECT_EQ(leaf->CountDown(), 2);
}

}  // namespace
