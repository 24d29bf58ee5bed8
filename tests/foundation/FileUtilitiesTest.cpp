#include "foundation/FileUtilities.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "filenames/TAFileName.h"
#include "foundation/Lists.h"
#include "support/TempDir.h"

namespace {

const VorString libraryPathAtStart = getenv("LD_LIBRARY_PATH");

class Files : public testing::Test {
 protected:
  VorString Path(std::string_view name) const { return dir / name; }

  std::string LinesOf(std::string_view content) const {
    VorListValVorString lines;
    EXPECT_EQ(ReadFile(dir.Write("lines", content).c_str(), lines), 0);
    return Joined(lines);
  }

  TempDir dir;
};

}  // namespace

TEST_F(Files, ReadDropsAnUnterminatedLastLineAndBlanksWhatIsNotPrintableAscii) {
  using namespace std::string_view_literals;
  EXPECT_EQ(LinesOf("a\n\nb\nc"), "a||b|");
  EXPECT_EQ(LinesOf(std::string(4094, 'x')), "");
  EXPECT_EQ(LinesOf("x\ty\r\n\xe9\xff\x80,\x7f~\n\0z\x1f\x20\n"sv), "x y |   ,\x7f~| z  |");
}

TEST_F(Files, ReadCutsLongLinesInPieces) {
  for (const std::size_t size : {4093u, 4094u, 4095u, 8188u, 8189u, 65536u, 200000u}) {
    std::string line(size, 'x');
    for (std::size_t i = 0; i < size; i += 97) line[i] = static_cast<char>('a' + i % 26);
    std::string want = "first|";
    for (std::size_t i = 0; i < size; i += 4094) want += line.substr(i, 4094) + "|";
    EXPECT_EQ(LinesOf("first\n" + line + "\nlast\n" + line.substr(0, 4094)), want + "last|");
  }
}

TEST_F(Files, ReadAddsToTheList) {
  VorListValVorString lines;
  TAIndex index;
  index.Append("kept", &index);
  const std::string longLine(5000, 'y');
  const VorString file = dir.Write("f", "b\na\nb\nkept\n" + longLine + "\n");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(ReadFile(file, lines) + ReadFile(file, index), 0);
  for (const VorString& none : {Path("missing"), VorString(dir.Path())}) {
    EXPECT_EQ(ReadFile(none, lines) + ReadFile(none, index), 2);
  }
  EXPECT_EQ(lines.Size(), 12);
  EXPECT_EQ(Joined(index), "a|b|kept|" + longLine.substr(4094) + "|" + longLine.substr(906) + "|");
  EXPECT_EQ(index["kept"], &index);
  EXPECT_EQ(FileExists(Path("missing")), 0);  // reading makes no file
}

TEST_F(Files, WriteReplacesTheFile) {
  VorListValVorString lines;
  std::string want;
  for (std::size_t i = 0; i < 3000; ++i) {
    const std::string line(i * 7 % 150, static_cast<char>('a' + i % 26));
    lines.Append(line);
    want += line + "\n";
  }
  EXPECT_EQ(WriteFile(Path("f"), lines), 0);
  EXPECT_EQ(dir.Read("f"), want);
  EXPECT_EQ(WriteFile(Path("f"), VorListValVorString()), 0);
  EXPECT_EQ(dir.Read("f"), "");
  EXPECT_EQ(WriteFile(Path("missing/f"), lines) + WriteFile(dir.Path(), lines), 2);
}

TEST_F(Files, CopyReplacesTheTargetAndOnlyRegularFilesExist) {
  const TAFileName from(dir.Write("from", "new").c_str()), to(dir.Write("to", "older").c_str());
  const TAFileName folder(dir.Path().c_str());
  EXPECT_EQ(CopyFile(from, to), 0);
  EXPECT_EQ(CopyFile(from, folder) + CopyFile(TAFileName(), to) + CopyFile(folder, to), 3);
  EXPECT_EQ(dir.Read("to"), "new");
  std::filesystem::create_symlink("to", dir / "link");
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(FileExists(Path("to")) + FileExists(Path("link")), 2);
  for (const char* name : {"", "pipe", "missing"}) EXPECT_EQ(FileExists(Path(name)), 0) << name;
}

TEST_F(Files, SearchTakesTheFirstFolderThatHasTheFileAndSelectionCountsAll) {
  dir.Write("2/tool", "");
  dir.Write("3/tool", "");
  std::filesystem::create_directories(dir / "1/tool");
  const std::string path = (dir / "0") + "::" + (dir / "1:") + (dir / "2/./:") + (dir / "3");
  EXPECT_EQ(SearchConcatenation("tool", path), (dir / "2/tool").c_str());
  EXPECT_TRUE(SearchConcatenation("other", path).IsNull() != 0);
  EXPECT_EQ(FileSelectionSize(Path("*/tool")), 3);
}

TEST_F(Files, WorkDir) {
  const VorString before = GetWorkDir();
  EXPECT_EQ(SetWorkDir(dir.Path()), 0);
  EXPECT_EQ(SetWorkDir("missing"), -1);
  EXPECT_EQ(GetWorkDir(), dir.Path());
  const std::string name(250, 'd');
  for (int depth = 0; depth < 10; ++depth) {
    ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
    ASSERT_EQ(SetWorkDir(name), 0);
  }
  EXPECT_EQ(GetWorkDir(), ".");  // too long to be told
  EXPECT_EQ(SetWorkDir(before), 0);
}

TEST(LibraryPath, ComesFromItsOwnVariableAtLoad) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // each child loads the library anew
  setenv("LD_LIBRARY_PATH", "/before", 1);
  EXPECT_EXIT(_exit(libraryPathAtStart == "/before" ? 0 : 1), testing::ExitedWithCode(0), "");
  setenv("TestAutoLibPath", "/opt/lib", 1);
  EXPECT_EXIT(_exit(libraryPathAtStart == "/opt/lib" ? 0 : 1), testing::ExitedWithCode(0), "");
  unsetenv("TestAutoLibPath");
  unsetenv("LD_LIBRARY_PATH");
}
