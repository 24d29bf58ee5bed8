#include "persistence/TAPObjectSaveContext.h"

#include <gtest/gtest.h>
#include <limits.h>

#include <filesystem>
#include <fstream>
#include <locale>
#include <map>
#include <string>

#include "persistence/TAPObject.h"
#include "support/TempDir.h"

namespace {

using Files = std::map<std::string, std::string>;

struct Grouping : std::numpunct<char> {
  std::string do_grouping() const override { return "\3"; }
};

Files Saved(const TAPObject& root) {
  const TempDir directory;
  EXPECT_EQ(root.SaveToFile(TAFileName(directory.Path().c_str())), 0);
  Files files;
  for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
    files[entry.path().filename()] = directory.Read(entry.path().filename().native());
  }
  return files;
}

TEST(Save, WritesEachKindOfRecordToItsFile) {
  TAPName name("x");
  TAPPath path(&name), longer(&path, &name);
  TAPObject root;  // destroyed before what it refers to
  EXPECT_EQ(Saved(root), (Files{{"Objects.txt", ""}}));
  root.SetAttribute("a:\n", ":\n:");  // nothing is escaped
  root.SetAttribute("b", TAPAttr());
  root.SetAttribute("c", VorListValTAPAttr());
  root.SetAttribute("d", TAFileName("/d//f"));
  root.SetAttribute("e", &longer);
  root.SetAttribute("f", INT_MIN);
  root.SetAttribute("g", static_cast<TAPPath*>(nullptr));
  root.SetAttribute("h", static_cast<TAPObject*>(nullptr));
  EXPECT_EQ(Saved(root),
            (Files{{"AttrFileName.txt", "4:/d/f\n"},
                   {"AttrInteger.txt", "6:-2147483648\n"},
                   {"AttrList.txt", ""},
                   {"AttrObject.txt", "8:9\n"},
                   {"AttrPath.txt", "5:x;x;\n7:\n"},
                   {"AttrString.txt", "1::\n:\n"},
                   {"Objects.txt",
                    "0:a:\n:AttrString:1\n0:b:Null:2\n0:c:AttrList:3\n0:d:AttrFileName:4\n"
                    "0:e:AttrPath:5\n0:f:AttrInteger:6\n0:g:AttrPath:7\n0:h:AttrObject:8\n"}}));
}

TEST(Save, NumbersTreesDepthFirstAndWritesChildrenFirst) {
  TAPObject child, root;
  child.SetAttribute("n", 7);
  root.SetAttribute("a", &child);
  root.AppendToAttribute("b", &child);  // reached twice, written twice
  VorListValTAPAttr inner;
  inner.Append("s");
  root.AppendToAttribute("b", inner);
  EXPECT_EQ(Saved(root), (Files{{"AttrInteger.txt", "3:7\n7:7\n"},
                                {"AttrList.txt", "4:1:5\n4:2:8\n8:1:9\n"},
                                {"AttrObject.txt", "1:2\n5:6\n"},
                                {"AttrString.txt", "9:s\n"},
                                {"Objects.txt",
                                 "2:n:AttrInteger:3\n0:a:AttrObject:1\n"
                                 "6:n:AttrInteger:7\n0:b:AttrList:4\n"}}));
}

TEST(Save, ReplacesExistingFilesAndSkipsThoseItCannotOpen) {
  const TempDir directory;
  std::filesystem::create_directory(directory / "Objects.txt");  // no file can be there
  TAPObject root;
  for (const std::string& text : {std::string(100000, 'x'), std::string("y")}) {
    root.SetAttribute("n", text.c_str());
    EXPECT_EQ(root.SaveToFile(TAFileName(directory.Path().c_str())), 0);
    EXPECT_EQ(directory.Read("AttrString.txt"), "1:" + text + "\n");
  }
}

TEST(Save, OpensEachStreamOnceWhateverTheLocale) {
  const TempDir directory;
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  TAPObjectSaveContext context(TAFileName(directory.Path().c_str()));
  TAPAttr(1234).SaveToFile(7, context);
  EXPECT_EQ(directory.Read("AttrInteger.txt"), "7:1234\n");  // before the context is destroyed
  EXPECT_EQ(context.GetStream("./AttrString"), context.GetStream("AttrString"));
  *context.GetStream("AttrInteger") << 1234 << std::flush;
  EXPECT_EQ(directory.Read("AttrInteger.txt"), "7:1234\n1234");
  std::locale::global(before);
}

}  // namespace
