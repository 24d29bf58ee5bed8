#include "foundation/FileUtilities.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/VorListValVorString.h"
#include "containers/TAIndex.h"
#include "filenames/TAFileName.h"
#include "support/TempDir.h"

using testing::ElementsAre;

namespace {

std::vector<std::string> Texts(const VorListValVorString& list) {
  std::vector<std::string> texts;
  for (int i = 1; i <= list.Size(); ++i) texts.emplace_back(list[i].View());
  return texts;
}

const VorString libraryPathAtStart = getenv("LD_LIBRARY_PATH");

class Files : public testing::Test {
 protected:
  VorString Path(std::string_view name) const { return dir / name; }

  std::vector<std::string> LinesOf(std::string_view content) const {
    VorListValVorString lines;
    EXPECT_EQ(ReadFile(VorString(dir.Write("lines", content)), lines), 0);
    return Texts(lines);
  }

  TempDir dir;
};

}  // namespace

TEST_F(Files, ReadDropsAnUnterminatedLastLine) {
  EXPECT_THAT(LinesOf("a\nb"), ElementsAre("a"));
  EXPECT_THAT(LinesOf("a\n\nb\n"), ElementsAre("a", "", "b"));
  EXPECT_THAT(LinesOf(""), ElementsAre());
  EXPECT_THAT(LinesOf(std::string(4094, 'x')), ElementsAre());
}

TEST_F(Files, ReadBlanksWhatIsNotPrintableAscii) {
  using namespace std::string_view_literals;
  EXPECT_THAT(LinesOf("x\ty\r\n\xe9\xff\x80|\x7f~\n\0z\x1f\x20\n"sv),
              ElementsAre("x y ", "   |\x7f~", " z  "));
}

TEST_F(Files, ReadCutsLongLinesInPieces) {
  for (const std::size_t size : {4093u, 4094u, 4095u, 8188u, 8189u, 65536u, 200000u}) {
    std::string line(size, 'x');
    for (std::size_t i = 0; i < size; i += 97) line[i] = static_cast<char>('a' + i % 26);
    std::vector<std::string> want = {"first"};
    for (std::size_t i = 0; i < size; i += 4094) want.push_back(line.substr(i, 4094));
    want.emplace_back("last");
    EXPECT_EQ(LinesOf("first\n" + line + "\nlast\n" + line.substr(0, 4094)), want) << size;
  }
}

TEST_F(Files, ReadPastTheEndOfABlock) {
  std::string content;
  std::vector<std::string> want;
  for (std::size_t i = 0; i < 3000; ++i) {
    want.emplace_back(i % 150, static_cast<char>('a' + i % 26));
    content += want.back() + "\n";
  }
  EXPECT_EQ(LinesOf(content), want);
}

TEST_F(Files, ReadAddsToTheList) {
  VorListValVorString lines;
  const VorString path = dir.Write("f", "a\n");
  EXPECT_EQ(ReadFile(path, lines), 0);
  EXPECT_EQ(ReadFile(path, lines), 0);
  EXPECT_EQ(ReadFile(Path("missing"), lines), 1);
  EXPECT_EQ(ReadFile(dir.Path(), lines), 1);
  EXPECT_THAT(Texts(lines), ElementsAre("a", "a"));
  EXPECT_EQ(FileExists(Path("missing")), 0);  // reading makes no file
}

TEST_F(Files, ReadIntoAnIndex) {
  TAIndex lines;
  lines.Append("kept", &lines);
  const std::string longLine(5000, 'y');
  EXPECT_EQ(ReadFile(VorString(dir.Write("f", "b\na\nb\nkept\n" + longLine + "\n")), lines), 0);
  EXPECT_THAT(std::vector<std::string>(lines.keys, lines.keys + lines.count),
              ElementsAre("a", "b", "kept", longLine.substr(4094), longLine.substr(906)));
  EXPECT_EQ(lines["kept"], &lines);
  EXPECT_EQ(lines["a"], nullptr);
  EXPECT_EQ(ReadFile(Path("missing"), lines), 1);
}

TEST_F(Files, WriteReplacesTheFile) {
  VorListValVorString lines;
  const VorString path = dir.Write("f", "something longer than what follows");
  lines.Append("a");
  lines.Append("");
  EXPECT_EQ(WriteFile(path, lines), 0);
  EXPECT_EQ(dir.Read("f"), "a\n\n");
  std::string want = "a\n\n";
  for (int i = 0; i < 3000; ++i) {
    const std::string line(static_cast<std::size_t>(i % 100), 'z');
    lines.Append(line);
    want += line + "\n";
  }
  EXPECT_EQ(WriteFile(Path("new"), lines), 0);
  EXPECT_EQ(dir.Read("new"), want);
  EXPECT_EQ(WriteFile(Path("new"), VorListValVorString()), 0);
  EXPECT_EQ(dir.Read("new"), "");
  EXPECT_EQ(WriteFile(Path("missing/f"), lines), 1);
  EXPECT_EQ(WriteFile(dir.Path(), lines), 1);
}

TEST_F(Files, ExistsOnlyAsARegularFile) {
  dir.Write("f", "");
  std::filesystem::create_symlink("f", dir / "link");
  std::filesystem::create_symlink("gone", dir / "broken");
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(FileExists(Path("f")), 1);
  EXPECT_EQ(FileExists(Path("link")), 1);
  for (const char* name : {"", "pipe", "broken", "missing"}) EXPECT_EQ(FileExists(Path(name)), 0);
}

TEST_F(Files, CopyReplacesTheTarget) {
  const TAFileName from(dir.Write("from", "new").c_str()), to(dir.Write("to", "older").c_str());
  EXPECT_EQ(CopyFile(from, to), 0);
  EXPECT_EQ(dir.Read("to"), "new");
  EXPECT_EQ(CopyFile(from, from), 1);
  EXPECT_EQ(dir.Read("from"), "new");
  EXPECT_EQ(CopyFile(from, TAFileName(dir.Path().c_str())), 1);
  for (const TAFileName& noFile : {TAFileName(), TAFileName(dir.Path().c_str())}) {
    EXPECT_EQ(CopyFile(noFile, to), 1);
  }
  EXPECT_EQ(dir.Read("to"), "new");
}

TEST_F(Files, SearchTakesTheFirstDirectoryThatHasTheFile) {
  dir.Write("2/tool", "");
  dir.Write("3/tool", "");
  std::filesystem::create_directories(dir / "1/tool");
  const std::string path =
      (dir / "missing") + "::" + (dir / "1") + ":" + (dir / "2/./") + ":" + (dir / "3");
  EXPECT_EQ(SearchConcatenation("tool", VorString(path)), (dir / "2/tool").c_str());
  EXPECT_EQ(SearchConcatenation("other", VorString(path)).IsNull(), 1);
  EXPECT_EQ(SearchConcatenation("tool", "").IsNull(), 1);
}

TEST_F(Files, SelectionSizeCountsWhatAPatternSelects) {
  for (const char* name : {"a.c", "b.c", "x.h"}) dir.Write(name, "");
  EXPECT_EQ(FileSelectionSize(Path("*.c")), 2);
  EXPECT_EQ(FileSelectionSize(Path("x.h")), 1);
  EXPECT_EQ(FileSelectionSize(Path("missing/*")), 0);
}

TEST_F(Files, WorkDir) {
  const VorString before = GetWorkDir();
  EXPECT_EQ(SetWorkDir(dir.Path()), 0);
  EXPECT_EQ(GetWorkDir(), dir.Path());
  EXPECT_EQ(SetWorkDir("missing"), -1);
  EXPECT_EQ(GetWorkDir(), dir.Path());
  for (int depth = 0; depth < 10; ++depth) {
    const std::string name(250, 'd');
    ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
    ASSERT_EQ(SetWorkDir(name), 0);
  }
  EXPECT_EQ(GetWorkDir(), ".");  // too long to be told
  EXPECT_EQ(SetWorkDir(before), 0);
}

TEST(LibraryPath, ComesFromItsOwnVariableAtLoad) {
  // Each child runs the program anew, and so loads the library anew, in the environment of here.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("LD_LIBRARY_PATH", "/before", 1);
  EXPECT_EXIT(_exit(libraryPathAtStart == "/before" ? 0 : 1), testing::ExitedWithCode(0), "");
  setenv("TestAutoLibPath", "/opt/lib", 1);
  EXPECT_EXIT(_exit(libraryPathAtStart == "/opt/lib" ? 0 : 1), testing::ExitedWithCode(0), "");
  unsetenv("TestAutoLibPath");
  unsetenv("LD_LIBRARY_PATH");
}
