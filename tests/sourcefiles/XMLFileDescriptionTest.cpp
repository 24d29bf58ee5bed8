#include "sourcefiles/XMLFileDescription.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

TEST(XMLFileDescription, FilesAndDirectories) {
  const TempDir dir;
  const TAFileName file(dir.Write("sub/a&b.txt", "").c_str());
  const TAFileName directory(VorString(dir / "sub"));
  const auto check = [](VorXMLNode node, const char* element, const TAFileName& path,
                        VorXMLNodeListener& listener) {
    EXPECT_EQ(node.GetName(), element);
    EXPECT_EQ(node.AttributeCount(), 2);
    EXPECT_EQ(node.GetAttribute("Name"), VorString(path.basename(1)));
    EXPECT_EQ(node.GetAttribute("Path"), VorString(path));
    EXPECT_EQ(node.RemoveListener(&listener), 0);
    node.AddListener(&listener);
    node.NotifyListeners();
    EXPECT_EQ(node.ListenerCount(), 0) << "the listener detached itself";
  };
  check(GetFileDescription(file), "File", file, _fileListener);
  check(GetFileDescriptionRW(file), "FileRW", file, _fileListener);
  check(GetFileDescription(directory), "Directory", directory, _directoryListener);
  check(GetFileDescriptionRW(directory), "Directory", directory, _directoryListenerRW);
  for (const TAFileName& path : {TAFileName(VorString(dir / "none")), TAFileName()}) {
    EXPECT_EQ(GetFileDescription(path).IsNull(), 1);
    EXPECT_EQ(GetFileDescriptionRW(path).IsNull(), 1);
  }
}

TEST(VorXMLNode, IsAHandleOfATree) {
  VorXMLNode root("a"), child("b"), copy(root);
  EXPECT_EQ(copy.SetAttribute("x", "1"), 0);
  copy.SetAttribute("y", "\"toreplace\"\n");
  copy.SetAttribute("x", "3");
  EXPECT_EQ(root.AppendChild(child), 0);
  child.AppendChild(VorXMLNode("c"));
  EXPECT_EQ(root.GetAttributeName(2), "y");
  EXPECT_EQ(copy.GetChild(1), child);
  EXPECT_EQ(child.GetParent(), root);
  for (const VorXMLNode& refused : {child, root, VorXMLNode()}) {
    EXPECT_EQ(root.AppendChild(refused), 1) << "it has a parent, is the root or empty";
  }
  EXPECT_EQ(root.ToText(),
            "<a x=\"3\" y=\"&quot;toreplace&quot;&#10;\">\n  <b>\n    <c/>\n  </b>\n</a>\n");
  EXPECT_EQ(VorXMLNode().ToText(), "");
  for (const int outside : {-1, 0, 3}) EXPECT_EQ(root.GetChild(outside), VorXMLNode());
  for (const char* name : {"", "1", "-a", "a b", "a:b", "a>", "\xc3\xa9"}) {
    EXPECT_EQ(VorXMLNode(name).IsNull(), 1) << name;
    EXPECT_EQ(child.SetAttribute(name, ""), 1) << name;
  }
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
