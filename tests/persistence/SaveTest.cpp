#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <locale>
#include <map>
#include <string>

#include "persistence/TAPObject.h"
#include "persistence/TAPObjectSaveContext.h"
#include "support/TempDir.h"

namespace {

using Files = std::map<std::string, std::string>;

Files FilesIn(const TempDir& folder) {
  Files files;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
    const std::string name = entry.path().filename();
    files[name] = folder.Read(name);
  }
  return files;
}

Files Saved(const TAPObject& root) {
  const TempDir folder;
  EXPECT_EQ(root.SaveToFile(TAFileName(folder.Path().c_str())), 0);
  return FilesIn(folder);
}

TEST(Save, WritesEachKindOfRecordToItsFile) {
  TAPObject root;
  EXPECT_EQ(Saved(root), (Files{{"Objects.txt", ""}}));

  root.SetAttribute("count", 3);
  root.AppendToAttribute("tags", "a");
  root.AppendToAttribute("tags", "b");
  EXPECT_EQ(Saved(root), (Files{{"AttrInteger.txt", "1:3\n"},
                                {"AttrList.txt", "2:1:3\n2:2:4\n"},
                                {"AttrString.txt", "3:a\n4:b\n"},
                                {"Objects.txt", "0:count:AttrInteger:1\n0:tags:AttrList:2\n"}}));

  TAFileName file("/d//f");
  TAPName name("x");
  TAPPath path(&name), longer(&path, &name);
  TAPObject others;  // ends before what it holds
  others.SetAttribute("a:\n", ":\n:");  // nothing is escaped
  others.SetAttribute("b", TAPAttr());
  others.SetAttribute("c", VorListValTAPAttr());
  others.SetAttribute("d", file);
  others.SetAttribute("e", &longer);
  others.SetAttribute("f", INT_MIN);
  others.SetAttribute("g", static_cast<TAPPath*>(nullptr));
  others.SetAttribute("h", static_cast<TAPObject*>(nullptr));
  EXPECT_EQ(Saved(others), (Files{{"AttrFileName.txt", "4:/d/f\n"},
                                  {"AttrInteger.txt", "6:-2147483648\n"},
                                  {"AttrList.txt", ""},
                                  {"AttrObject.txt", "8:9\n"},
                                  {"AttrPath.txt", "5:x;x;\n7:\n"},
                                  {"AttrString.txt", "1::\n:\n"},
                                  {"Objects.txt",
                                   "0:a:\n:AttrString:1\n0:b:Null:2\n0:c:AttrList:3\n"
                                   "0:d:AttrFileName:4\n0:e:AttrPath:5\n0:f:AttrInteger:6\n"
                                   "0:g:AttrPath:7\n0:h:AttrObject:8\n"}}));
}

TEST(Save, NumbersTreesDepthFirstAndWritesTheInsideFirst) {
  TAPObject child, root;
  child.SetAttribute("n", 7);
  root.SetAttribute("a", &child);
  root.AppendToAttribute("b", &child);  // reached twice, written twice
  root.AppendToAttribute("b", 8);
  EXPECT_EQ(Saved(root), (Files{{"AttrInteger.txt", "3:7\n7:7\n8:8\n"},
                                {"AttrList.txt", "4:1:5\n4:2:8\n"},
                                {"AttrObject.txt", "1:2\n5:6\n"},
                                {"Objects.txt",
                                 "2:n:AttrInteger:3\n0:a:AttrObject:1\n"
                                 "6:n:AttrInteger:7\n0:b:AttrList:4\n"}}));
}

class Grouping : public std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Save, FormatsWithoutTheGlobalLocale) {
  TAPObject root;
  root.SetAttribute("n", 1234567);
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  const Files files = Saved(root);
  std::locale::global(before);
  EXPECT_EQ(files.at("AttrInteger.txt"), "1:1234567\n");
}

TEST(Save, WritesLongLinesWholeAndReplacesWhatWasThere) {
  const TempDir folder;
  const std::string text(100000, 'x');
  TAPObject root;
  root.SetAttribute("n", text.c_str());
  root.SaveToFile(TAFileName(folder.Path().c_str()));
  EXPECT_EQ(folder.Read("AttrString.txt"), "1:" + text + "\n");
  root.SetAttribute("n", "y");
  root.SaveToFile(TAFileName(folder.Path().c_str()));
  EXPECT_EQ(folder.Read("AttrString.txt"), "1:y\n");
}

TEST(Save, LosesWhatCannotBeOpened) {
  const TempDir folder;
  TAPObject root;
  root.SetAttribute("n", 1);
  EXPECT_EQ(root.SaveToFile(TAFileName((folder / "missing").c_str())), 0);
  EXPECT_EQ(FilesIn(folder), Files());
  std::filesystem::create_directory(folder / "Objects.txt");  // no file can be there
  EXPECT_EQ(root.SaveToFile(TAFileName(folder.Path().c_str())), 0);
  EXPECT_EQ(folder.Read("AttrInteger.txt"), "1:1\n");
}

TEST(SaveContext, OpensEachStreamOnceFlushedAndPrivate) {
  const TempDir folder;
  TAPObjectSaveContext context(TAFileName(folder.Path().c_str()));
  for (int uid : {0, 1, 2}) EXPECT_EQ(context.GetNewUID(), uid);
  TAPAttr("a").SaveToFile(7, context);
  EXPECT_EQ(folder.Read("AttrString.txt"), "7:a\n");  // before the context ends
  std::fstream* const stream = context.GetStream("AttrString");
  *stream << "8:b\n" << std::flush;
  EXPECT_EQ(context.GetStream("./AttrString"), stream);
  EXPECT_EQ(folder.Read("AttrString.txt"), "7:a\n8:b\n");

  int found = 0;
  for (int fd = 0; fd < 1024; ++fd) {
    std::error_code error;
    const auto target = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), error);
    if (target.string() != folder / "AttrString.txt") continue;
    ++found;
    EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);
  }
  EXPECT_EQ(found, 1);
}

}  // namespace
