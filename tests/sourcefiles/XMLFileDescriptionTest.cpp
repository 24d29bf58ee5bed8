#include "sourcefiles/XMLFileDescription.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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
  } kTable[] = {
      {GetFileDescription(file), "File", "a&b.txt", file},
      {GetFileDescriptionRW(file), "FileRW", "a&b.txt", file},
      {GetFileDescription(folder), "Directory", "sub", folder},
      {GetFileDescriptionRW(folder), "Directory", "sub", folder},
  };
  for (VorXMLNode node; const auto& row : kTable) {
    node = row.node;
    EXPECT_EQ(node.GetName(), row.element);
    EXPECT_EQ(node.AttributeCount(), 2);
    EXPECT_EQ(node.GetAttributeName(1), "Name");
    EXPECT_EQ(node.GetAttribute("Name"), row.name);
    EXPECT_EQ(node.GetAttribute("Path"), VorString(row.path));
    RefreshFileDescription(node);
    RefreshFileDescriptionRW(node);
    EXPECT_EQ(node.ListenerCount(), 1);
    node.NotifyListeners();
    EXPECT_EQ(row.node.ListenerCount(), 0) << "the listener detached itself";
  }
  EXPECT_EQ(GetFileDescription(file).RemoveListener(&_fileListener), 0);
  EXPECT_EQ(GetFileDescriptionRW(file).RemoveListener(&_fileListener), 0);
  EXPECT_EQ(GetFileDescription(folder).RemoveListener(&_directoryListener), 0);
  EXPECT_EQ(GetFileDescriptionRW(folder).RemoveListener(&_directoryListenerRW), 0);
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
  VorXMLNode root("a");
  VorXMLNode copy(root);
  VorXMLNode child("b");
  EXPECT_EQ(copy.SetAttribute("x", "1"), 0);
  EXPECT_EQ(copy.SetAttribute("y", "2"), 0);
  EXPECT_EQ(copy.SetAttribute("x", "3"), 0);
  EXPECT_EQ(root.GetAttribute("x"), "3");
  EXPECT_EQ(root.GetAttributeName(2), "y");
  EXPECT_EQ(root.AppendChild(child), 0);
  EXPECT_EQ(copy.GetChild(1), child);
  EXPECT_EQ(child.GetParent(), root);
  EXPECT_EQ(root.AppendChild(child), 1) << "it has a parent";
  EXPECT_EQ(child.AppendChild(root), 1) << "an ancestor";
  EXPECT_EQ(root.AppendChild(root), 1);
  EXPECT_EQ(root.AppendChild(VorXMLNode()), 1);
  EXPECT_EQ(root.ChildCount(), 1);
  for (const int outside : {-1, 0, 3}) {
    EXPECT_EQ(root.GetChild(outside), VorXMLNode());
    EXPECT_EQ(root.GetAttributeName(outside), "");
  }
  root = copy = VorXMLNode();
  EXPECT_EQ(child.GetParent(), VorXMLNode()) << "gone";
  for (const char* name : {"", "1", "-a", "a b", "a:b", "a>", "\xc3\xa9"}) {
    EXPECT_EQ(VorXMLNode(name).IsNull(), 1) << name;
    EXPECT_EQ(child.SetAttribute(name, ""), 1) << name;
  }
}

TEST(VorXMLNode, WritesWellFormedText) {
  VorXMLNode root("Files");
  VorXMLNode sub("Directory");
  sub.SetAttribute("Name", "<a> & \"b\" 'toreplace'\n\t\r\x01\xff \xc3\xa9 \xef\xbf\xbf");
  sub.AppendChild(VorXMLNode("File"));
  root.AppendChild(sub);
  root.SetAttribute("n", VorString(std::string("1\0", 2)));
  EXPECT_EQ(root.ToText(),
            "<Files n=\"1?\">\n"
            "  <Directory Name=\"&lt;a&gt; &amp; &quot;b&quot; &apos;toreplace&apos;"
            "&#10;&#9;&#13;?? \xc3\xa9 ?\">\n"
            "    <File/>\n"
            "  </Directory>\n"
            "</Files>\n");
  EXPECT_EQ(VorXMLNode().ToText(), "");
}

TEST(VorXMLNode, ADeepTreeEndsWithoutRecursion) {
  VorXMLNode root("a");
  for (int i = 0; i < 300000; ++i) {
    VorXMLNode above("a");
    ASSERT_EQ(above.AppendChild(root), 0);
    root = above;
  }
}

namespace {

// Notes its calls, and does what it is told.
struct Listener final : VorXMLNodeListener {
  explicit Listener(std::vector<Listener*>* noted) : calls(noted) {}
  void Notify(VorXMLNode& node) override {
    calls->push_back(this);
    for (Listener* other : removes) node.RemoveListener(other);
    for (Listener* other : adds) node.AddListener(other);
    if (again) {
      again = false;
      node.NotifyListeners();
    }
    if (lastHandle != nullptr) *lastHandle = node = VorXMLNode();
  }

  std::vector<Listener*>* calls;
  std::vector<Listener*> removes, adds;
  bool again = false;
  VorXMLNode* lastHandle = nullptr;
};

}  // namespace

TEST(VorXMLNode, ListenersComeAndGoWhileTheyAreNotified) {
  using Calls = std::vector<Listener*>;
  Calls calls;
  Listener a(&calls), b(&calls), c(&calls), d(&calls);
  VorXMLNode node("n");
  for (Listener* listener : {&a, &b, &c, &a}) EXPECT_EQ(node.AddListener(listener), 0);
  EXPECT_EQ(node.ListenerCount(), 3);

  a.removes = {&a, &b};
  c.adds = {&d, &b};
  node.NotifyListeners();
  EXPECT_EQ(calls, (Calls{&a, &c}));
  calls.clear();
  node.NotifyListeners();
  EXPECT_EQ(calls, (Calls{&c, &d, &b}));

  calls.clear();
  d.again = true;
  d.removes = {&c, &d};
  node.NotifyListeners();  // d notifies once more, which reaches only b
  EXPECT_EQ(calls, (Calls{&c, &d, &b, &b}));
  EXPECT_EQ(node.ListenerCount(), 1);

  b.lastHandle = &node;
  node.NotifyListeners();
  EXPECT_EQ(node.IsNull(), 1);
  EXPECT_EQ(node.AddListener(&a), 1);
  EXPECT_EQ(node.RemoveListener(&a), 1);
}
