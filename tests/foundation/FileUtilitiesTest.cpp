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
  const std::pair<VorString, int> reads[] = {
      {file, 0}, {file, 0}, {Path("missing"), 1}, {dir.Path(), 1}};
  for (const auto& [path, want] : reads) {
    EXPECT_EQ(ReadFile(path, lines), want) << path;
    EXPECT_EQ(ReadFile(path, index), want) << path;
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
  EXPECT_EQ(WriteFile(Path("missing/f"), lines), 1);
  EXPECT_EQ(WriteFile(dir.Path(), lines), 1);
}

TEST_F(Files, CopyReplacesTheTarget) {
  const TAFileName from(dir.Write("from", "new").c_str()), to(dir.Write("to", "older").c_str());
  EXPECT_EQ(CopyFile(from, to), 0);
  EXPECT_EQ(CopyFile(from, TAFileName(dir.Path().c_str())), 1);
  EXPECT_EQ(CopyFile(TAFileName(), to), 1);
  EXPECT_EQ(dir.Read("to"), "new");
}

TEST_F(Files, ExistWithTheModeBitOfARegularFile) {
  dir.Write("file", "");
  std::filesystem::create_symlink("file", dir / "link");
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  ASSERT_EQ(mknod((dir / "socket").c_str(), S_IFSOCK | 0600, 0), 0);
  const std::pair<const char*, int> rows[] = {{"file", 1}, {"link", 1}, {"socket", 1},
                                              {".", 0},    {"pipe", 0}, {"missing", 0}};
  for (const auto& [name, want] : rows) {
    EXPECT_EQ(FileExists(Path(name)), want) << name;
    EXPECT_EQ(TAFileName(Path(name)).IsFile(), want) << name;
  }
}

TEST_F(Files, SearchReturnsTheFirstFileAndSelectionCountsAll) {
  dir.Write("2/tool", "");
  dir.Write("3/tool", "");
  std::filesystem::create_directories(dir / "1/tool");
  const std::string path = (dir / "0") + "::" + (dir / "1:") + (dir / "2/./:") + (dir / "3");
  EXPECT_EQ(SearchConcatenation("tool", path), (dir / "2/tool").c_str());
  EXPECT_EQ(SearchConcatenation("other", path).IsNull(), 1);
  EXPECT_EQ(FileSelectionSize(Path("*/tool")), 3);
}

TEST(LibraryPath, IsRestoredFromItsOwnVariableAtLoad) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // each child loads the library anew
  setenv("LD_LIBRARY_PATH", "/before", 1);
  EXPECT_EXIT(_exit(libraryPathAtStart == "/before" ? 0 : 1), testing::ExitedWithCode(0), "");
  setenv("TestAutoLibPath", "/opt/lib", 1);
  EXPECT_EXIT(_exit(libraryPathAtStart == "/opt/lib" ? 0 : 1), testing::ExitedWithCode(0), "");
  unsetenv("TestAutoLibPath");
  unsetenv("LD_LIBRARY_PATH");
}
