#include "sourcefiles/XMLFileDescription.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/InProcess.h"
#include "support/TempDir.h"

TEST(XMLFileDescription, FilesAndDirectories) {
  const TempDir dir;
  const TAFileName file(dir.Write("sub/a&b.txt", "").c_str());
  const TAFileName folder(VorString(dir / "sub"));
  const struct {
    VorXMLNode node;
    const char* element;
    const char* name;
    TAFileName path;
    VorXMLNodeListener* listener;
  } kTable[] = {
      {GetFileDescription(file), "File", "a&b.txt", file, &_fileListener},
      {GetFileDescriptionRW(file), "FileRW", "a&b.txt", file, &_fileListener},
      {GetFileDescription(folder), "Directory", "sub", folder, &_directoryListener},
      {GetFileDescriptionRW(folder), "Directory", "sub", folder, &_directoryListenerRW},
  };
  for (VorXMLNode node; const auto& row : kTable) {
    node = row.node;
    RefreshFileDescription(node);
    RefreshFileDescriptionRW(node);
    EXPECT_EQ(node.GetName(), row.element);
    EXPECT_EQ(node.AttributeCount(), 2);
    EXPECT_EQ(node.GetAttributeName(1), "Name");
    EXPECT_EQ(node.GetAttribute("Name"), row.name);
    EXPECT_EQ(node.GetAttribute("Path"), VorString(row.path));
    EXPECT_EQ(node.RemoveListener(row.listener), 0);
    node.AddListener(row.listener);
    node.NotifyListeners();
    EXPECT_EQ(row.node.ListenerCount(), 0) << "the listener detached itself";
  }
  EXPECT_EQ(GetFileDescription("/").GetAttribute("Name"), VorString(TAFileName("/").basename(1)));
  for (const TAFileName& path : {TAFileName(VorString(dir / "none")), TAFileName()}) {
    EXPECT_EQ(GetFileDescription(path).IsNull(), 1);
    EXPECT_EQ(GetFileDescriptionRW(path).IsNull(), 1);
  }
}

// In a process that is not allowed everything.
TEST(XMLFileDescription, AReadOnlyFileIsNoFileRW) {
  const TempDir dir;
  const VorString file(dir.Write("f", ""));
  chmod(dir.Path().c_str(), 0755);
  chmod(file, 0444);
  EXPECT_EQ(InProcess([&file] {
              if (getuid() == 0 && setuid(65534) != 0) return 2;
              return GetFileDescriptionRW(file).GetName() == "File" ? 0 : 1;
            }),
            0);
}

TEST(VorXMLNode, IsAHandleOfATree) {
  VorXMLNode root("a"), child("b");
  VorXMLNode copy(root);
  EXPECT_EQ(copy.SetAttribute("x", "1"), 0);
  EXPECT_EQ(copy.SetAttribute("y", "2"), 0);
  EXPECT_EQ(copy.SetAttribute("x", "3"), 0);
  EXPECT_EQ(root.AppendChild(child), 0);
  EXPECT_EQ(child.AppendChild(VorXMLNode("c")), 0);
  EXPECT_EQ(root.ToText(), "<a x=\"3\" y=\"2\">\n  <b>\n    <c/>\n  </b>\n</a>\n");
  EXPECT_EQ(root.GetAttribute("x"), "3");
  EXPECT_EQ(root.GetAttributeName(2), "y");
  EXPECT_EQ(copy.GetChild(1), child);
  EXPECT_EQ(child.GetParent(), root);
  for (const VorXMLNode& refused : {child, root, VorXMLNode()}) {
    EXPECT_EQ(root.AppendChild(refused), 1) << "it has a parent, is the root or empty";
  }
  EXPECT_EQ(root.ChildCount(), 1);
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
  VorXMLNode root("a");
  VorXMLNode lowest = root;
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
