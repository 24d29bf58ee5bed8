#include "sourcefiles/XMLFileDescription.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"

TEST(XMLFileDescription, FilesAndDirectories) {
  const TempDir dir;
  const TAFileName file(dir.Write("sub/a&b.txt", "").c_str());
  const TAFileName folder(VorString(dir / "sub"));
  struct {
    VorXMLNode node;
    const char* element;
    TAFileName path;
    VorXMLNodeListener* listener;
  } table[] = {
      {GetFileDescription(file), "File", file, &_fileListener},
      {GetFileDescriptionRW(file), "FileRW", file, &_fileListener},
      {GetFileDescription(folder), "Directory", folder, &_directoryListener},
      {GetFileDescriptionRW(folder), "Directory", folder, &_directoryListenerRW},
      {GetFileDescription("/"), "Directory", "/", &_directoryListener},
  };
  for (auto& [node, element, path, listener] : table) {
    RefreshFileDescription(node);
    RefreshFileDescriptionRW(node);
    EXPECT_EQ(node.GetName(), element);
    EXPECT_EQ(node.AttributeCount(), 2);
    EXPECT_EQ(node.GetAttribute("Name"), VorString(path.basename(1)));
    EXPECT_EQ(node.GetAttribute("Path"), VorString(path));
    EXPECT_EQ(node.RemoveListener(listener), 0);
    node.AddListener(listener);
    node.NotifyListeners();
    EXPECT_EQ(node.ListenerCount(), 0) << "the listener detached itself";
  }
  for (const TAFileName& path : {TAFileName(VorString(dir / "none")), TAFileName()}) {
    EXPECT_EQ(GetFileDescription(path).IsNull(), 1);
    EXPECT_EQ(GetFileDescriptionRW(path).IsNull(), 1);
  }
}

TEST(VorXMLNode, IsAHandleOfATree) {
  VorXMLNode root("a"), child("b"), copy(root);
  EXPECT_EQ(copy.SetAttribute("x", "1"), 0);
  copy.SetAttribute("y", "2");
  copy.SetAttribute("x", "3");
  EXPECT_EQ(root.AppendChild(child), 0);
  child.AppendChild(VorXMLNode("c"));
  EXPECT_EQ(root.GetAttributeName(2), "y");
  EXPECT_EQ(copy.GetChild(1), child);
  EXPECT_EQ(child.GetParent(), root);
  for (const VorXMLNode& refused : {child, root, VorXMLNode()}) {
    EXPECT_EQ(root.AppendChild(refused), 1) << "it has a parent, is the root or empty";
  }
  EXPECT_EQ(root.ToText(), "<a x=\"3\" y=\"2\">\n  <b>\n    <c/>\n  </b>\n</a>\n");
  for (const int outside : {-1, 0, 3}) {
    EXPECT_EQ(root.GetChild(outside), VorXMLNode());
    EXPECT_EQ(root.GetAttributeName(outside), "");
  }
  for (const char* name : {"", "1", "-a", "a b", "a:b", "a>", "\xc3\xa9"}) {
    EXPECT_EQ(VorXMLNode(name).IsNull(), 1) << name;
    EXPECT_EQ(child.SetAttribute(name, ""), 1) << name;
  }
}

TEST(VorXMLNode, WritesWellFormedText) {
  VorXMLNode node("File");
  node.SetAttribute("Name", "<a> & \"b\" 'toreplace'\n\t\r\x01\xff \xc3\xa9 \xef\xbf\xbf");
  node.SetAttribute("n", VorString(std::string("1\0", 2)));
  EXPECT_EQ(node.ToText(),
            "<File Name=\"&lt;a&gt; &amp; &quot;b&quot; &apos;toreplace&apos;"
            "&#10;&#9;&#13;?? \xc3\xa9 ?\" n=\"1?\"/>\n");
  EXPECT_EQ(VorXMLNode().ToText(), "");
}

TEST(VorXMLNode, ADeepTree) {
  VorXMLNode root("a"), lowest(root);
  for (int i = 0; i < 200000; ++i) {
    const VorXMLNode below("a");
    ASSERT_EQ(lowest.AppendChild(below), 0) << "walked up at each step this takes minutes";
    lowest = below;
  }
  EXPECT_EQ(lowest.AppendChild(root), 1) << "an ancestor, far above";
  root = VorXMLNode();
  EXPECT_TRUE(lowest.GetParent().IsNull()) << "all gone, without recursion";
}

namespace {

// Notes its calls, and does what it is told.
struct Listener final : VorXMLNodeListener {
  void Notify(VorXMLNode& node) override {
    calls += name;
    for (Listener* other : removes) node.RemoveListener(other);
    for (Listener* other : adds) node.AddListener(other);
    if (again-- > 0) node.NotifyListeners();
    if (lastHandle != nullptr) *lastHandle = node = VorXMLNode();
  }

  static inline std::string calls;
  char name;
  std::vector<Listener*> removes, adds;
  int again = 0;
  VorXMLNode* lastHandle = nullptr;
};

std::string Notified(VorXMLNode& node) {
  Listener::calls = "";
  node.NotifyListeners();
  return Listener::calls;
}

}  // namespace

TEST(VorXMLNode, ListenersComeAndGoWhileTheyAreNotified) {
  Listener a, b, c, d;
  a.name = 'a', b.name = 'b', c.name = 'c', d.name = 'd';
  VorXMLNode node("n");
  for (Listener* listener : {&a, &b, &c, &a}) EXPECT_EQ(node.AddListener(listener), 0);
  EXPECT_EQ(node.ListenerCount(), 3);
  a.removes = {&a, &b};
  c.adds = {&d, &b};
  EXPECT_EQ(Notified(node), "ac");
  EXPECT_EQ(Notified(node), "cdb");
  d.again = 1;
  d.removes = {&c, &d};
  EXPECT_EQ(Notified(node), "cdbb") << "d notifies once more, which reaches only b";
  b.lastHandle = &node;
  EXPECT_EQ(Notified(node), "b");
  EXPECT_EQ(node.AddListener(&a), 1) << "empty now";
  EXPECT_EQ(node.RemoveListener(&a), 1);
}
