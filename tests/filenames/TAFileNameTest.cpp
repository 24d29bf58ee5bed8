#include "filenames/TAFileName.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <set>
#include <string>

#include "support/TempDir.h"

namespace {

std::string Text(const TAFileName& name) {
  return static_cast<const char*>(name);
}

std::string Repeat(const std::string& piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

// A temporary working directory, which PWD does not tell.
class TAFileNameOnDisk : public testing::Test {
 protected:
  TAFileNameOnDisk() {
    std::filesystem::current_path(_dir.Path());
    unsetenv("PWD");
  }
  ~TAFileNameOnDisk() override {
    std::filesystem::current_path(_old);
    setenv("PWD", _old.c_str(), 1);
  }

  TempDir _dir;

 private:
  std::filesystem::path _old = std::filesystem::current_path();
};

}  // namespace

TEST(TAFileName, BringsTextIntoNormalForm) {
  for (const std::string row :
       {// Backslashes, and slashes in a row.
        "a=a", "/=/", "a\\b\\c=a/b/c", "\\\\h\\s=/h/s", "a///b=a//b", "a////b=a//b", "//=/",
        "a///=a/",
        // Dots.
        ".=.", "./a/./b/=a/b", "a/b/.=a/b", "/./=/", "/.=/.", "/././.=/.", "./.=.", ".//./a=a",
        "/./.x=/.x",
        // Parents.
        "..=..", "a/b/../c=a/c", "a/b/c/../../d=a/d", "a/b/..=a", "/a/..=/",
        "x/..=", "x/..////y=/y", "../x=../x", "./..=..", "a/../../b=../b", "/../a=/../a",
        "/a/../../b=/../b", "a/..b=a/..b", "a/.../../b=a/.../../b", "a/.x/../b=a/b",
        "a///../b=a//../b", "a\\..\\b=b", "a/../.="}) {
    const std::size_t equals = row.find('=');
    EXPECT_EQ(Text(TAFileName(row.c_str(), static_cast<int>(equals))), row.substr(equals + 1))
        << row;
  }
  const char noTerminator[] = {'a', '/', '.', 'b'};
  EXPECT_EQ(Text(TAFileName(noTerminator, 4)), "a/.b");
  EXPECT_EQ(Text(TAFileName("ab", 100)), "ab");
}

TEST(TAFileName, FoldsMegabytesInLinearTime) {
  constexpr int kMany = 1 << 20;
  EXPECT_EQ(Text(VorString(Repeat("/", kMany))).size(), kMany / 2 - 1);
  EXPECT_EQ(Text(VorString(Repeat(".", kMany) + Repeat("/x/../..", kMany))),
            Repeat(".", kMany) + Repeat("/..", kMany));
  EXPECT_EQ(TAFileName(VorString(Repeat("/a", kMany))).IsUnderDirectory("/x"), 0);
}

TEST(TAFileName, NullNameComesFromNoTextAndIsHarmless) {
  TAFileName null("");
  EXPECT_TRUE(null.IsNull() && TAFileName().IsNull() && TAFileName(nullptr).IsNull());
  EXPECT_TRUE(TAFileName(VorString()).IsNull() && TAFileName("abc", 0).IsNull());
  EXPECT_FALSE(TAFileName("x/..").IsNull());  // an empty text is a text
  EXPECT_STREQ(null, "");
  EXPECT_EQ(null.IsFile() + null.IsDirectory() + null.IsUnderDirectory("a") + null.Delete(), 0);
  EXPECT_TRUE(null.dirname(1).IsNull() && null.basename(1).IsNull());
  EXPECT_TRUE(null.CreateDirectory() == 1 && null.CreateNotExistingDirectory() == -2);
  EXPECT_EQ(null.CreateRecursiveDirectory(), 0);
  null.SetAsExecutable(), null.Normalize(), null.AddExtension("");
  EXPECT_TRUE(null.IsNull());
  null.SetExtension("./x");
  EXPECT_EQ(Text(null), "./x");  // as it is, not in normal form
}

TEST(TAFileName, CopiesShareUntilOneChanges) {
  TAFileName name("dir///f.c");
  TAFileName added(name), set, joined(name), folded(name);
  set = name;
  EXPECT_EQ(static_cast<const char*>(name), static_cast<const char*>(set));
  added.AddExtension(".bak//");
  set.SetExtension("o");
  joined += "g";
  folded.Normalize();
  EXPECT_TRUE(added == "dir//f.c.bak//" && set == "dir//f.o" && joined == "dir/f.c/g");
  EXPECT_TRUE(folded == "dir/f.c" && name == "dir//f.c");
}

TEST(TAFileName, TakesItsOwnText) {
  TAFileName name("a/b.c/d"), &self = name;
  name = self;
  name = static_cast<const char*>(name) + 2;
  name += name;
  EXPECT_EQ(Text(name), "b.c/d/b.c/d");
  const TAFileName moved(std::move(name));
  EXPECT_TRUE(name.IsNull());  // NOLINT(bugprone-use-after-move): promised
  EXPECT_EQ(Text(moved.basename(2)), "b.c");
}

TEST(TAFileName, ComparesByText) {
  const TAFileName name("a/b");
  EXPECT_TRUE(name == TAFileName("a//b") && name.IsEqual("a/b") && name != TAFileName("A/B"));
  EXPECT_TRUE(name == "a/b" && "a/b" == name && name == VorString("a/b"));
  EXPECT_TRUE(name != "a//b");                             // a plain text is not normalised first
  EXPECT_TRUE(TAFileName("a\x7f") < TAFileName("a\x80"));  // by unsigned byte
}

TEST(TAFileName, Joins) {
  EXPECT_TRUE(TAFileName("a/b") + "../c" == "a/c" && TAFileName("/") + "c" == "/c");
  EXPECT_TRUE(TAFileName("a") + VorString("/b") == "a/b" && TAFileName() + "./b/" == "b");
}

TEST(TAFileName, GivesComponentsFromTheEndAndIsUnderItsParents) {
  const TAFileName name("/usr/lib/x.so"), gap("a///b");
  EXPECT_TRUE(name.basename(1) == "x.so" && name.basename(2) == "lib" && name.basename(5) == name);
  EXPECT_TRUE(TAFileName("a").basename(1) == "a" && TAFileName("/").basename(1).IsNull());
  EXPECT_TRUE(gap.basename(1) == "b" && gap.basename(2).IsNull());
  EXPECT_TRUE(name.dirname(1) == "/usr/lib" && name.Getdirname(2) == "/usr");
  EXPECT_TRUE(name.dirname(3).IsNull() && TAFileName("a").dirname(1).IsNull());
  EXPECT_TRUE(TAFileName("a/b/c").dirname(2) == "a" && gap.dirname(1) == "a");
  EXPECT_TRUE(name.IsUnderDirectory(name) && name.IsUnderDirectory("/usr"));
  for (const char* other : {"/", "/x", "/usr/li"}) EXPECT_EQ(name.IsUnderDirectory(other), 0);
  EXPECT_EQ(TAFileName("a////////b/c").IsUnderDirectory("a///b"), 1);  // each parent folds anew
}

TEST(TAFileName, Extensions) {
  const char* const rows[][3] = {{"a.tar.gz", "gz", "a.tar.o"},
                                 {"Makefile", "", "Makefileo"},
                                 {"dir.d/file", "d/file", "dir.o"},
                                 {"f.", "", "f.o"}};
  for (const auto& [text, extension, afterSet] : rows) {
    TAFileName name(text);
    EXPECT_EQ(name.GetExtension(), extension) << text;
    EXPECT_TRUE(name.HasExtension(extension) && !name.HasExtension("oo")) << text;
    EXPECT_EQ(name.HasExtension(nullptr), 0) << text;
    name.SetExtension("o");
    EXPECT_EQ(Text(name), afterSet);
  }
}

TEST_F(TAFileNameOnDisk, MakesDirectoriesAndTellsWhichLevelFailed) {
  TAFileName one("one");
  EXPECT_TRUE(one.CreateDirectory() == 0 && one.CreateDirectory() == -1);
  EXPECT_EQ(one.CreateNotExistingDirectory(), 1);
  EXPECT_EQ(TAFileName("two").CreateNotExistingDirectory(), 0);
  EXPECT_EQ(TAFileName("no/where").CreateNotExistingDirectory(), -1);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(TAFileName("a/b/c").CreateRecursiveDirectory(), 0);
  EXPECT_EQ(TAFileName("a/b/c").IsDirectory(), 1);

  _dir.Write("file", "");
  EXPECT_EQ(TAFileName("file").CreateRecursiveDirectory(), 0);  // no parent: whatever mkdir says
  EXPECT_EQ(TAFileName("file/x").CreateRecursiveDirectory(), -1);
  EXPECT_EQ(TAFileName("file/x/y").CreateRecursiveDirectory(), 1);
  const std::string piece = std::string(200, 'd') + "/";  // made as deep as the system goes
  EXPECT_EQ(TAFileName(VorString(Repeat(piece, 5000))).CreateRecursiveDirectory(), 1);
  EXPECT_EQ(TAFileName(VorString(Repeat(piece, 20))).IsDirectory(), 1);
}

TEST_F(TAFileNameOnDisk, TellsFilesFromDirectoriesAndChangesThem) {
  const TAFileName file(_dir.Write("f", "").c_str());
  ASSERT_EQ(chmod(file, 02640), 0);
  file.SetAsExecutable();
  struct stat info;
  ASSERT_EQ(stat(file, &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 02740u);
  std::filesystem::create_directory_symlink(".", "link");
  ASSERT_EQ(mknod("socket", S_IFSOCK | 0600, 0), 0);  // has both mode bits
  for (const char* name : {"f", "socket"}) EXPECT_EQ(TAFileName(name).IsFile(), 1);
  for (const char* name : {"link", "socket"}) EXPECT_EQ(TAFileName(name).IsDirectory(), 1);
  for (const char* name : {".", "missing", "/dev/null"}) EXPECT_EQ(TAFileName(name).IsFile(), 0);
  EXPECT_TRUE(file.IsDirectory() == 0 && file.Delete() == 0 && file.Delete() == -1);
}

TEST_F(TAFileNameOnDisk, WorkDirIsTheShellsIfItSaysSoAndTooLongWith1024Bytes) {
  std::filesystem::create_directory("sub");
  EXPECT_EQ(TAFileName::SetWorkDir("sub"), 0);
  EXPECT_EQ(Text(TAFileName::GetWorkDir()), _dir / "sub");
  EXPECT_EQ(TAFileName::SetWorkDir("sub") + TAFileName::SetWorkDir(TAFileName()), -2);
  setenv("PWD", "/some//where/", 1);
  EXPECT_EQ(Text(TAFileName::GetWorkDir()), "/some/where");

  unsetenv("PWD");
  std::filesystem::path deep = _dir.Path();
  while (deep.native().size() < 820) deep /= std::string(200, 'd');
  deep /= std::string(1022 - deep.native().size(), 'e');  // 1023 bytes and the terminator
  std::filesystem::create_directories(deep);
  std::filesystem::current_path(deep);
  EXPECT_EQ(Text(TAFileName::GetWorkDir()), deep.native());
  std::filesystem::create_directory(deep += "f");
  std::filesystem::current_path(deep);
  EXPECT_TRUE(TAFileName::GetWorkDir().IsNull());
}

TEST_F(TAFileNameOnDisk, FullPathIsKeptUntilTheTextChanges) {
  _dir.Write("f", "");
  TAFileName name("f"), missing("g"), null;
  EXPECT_EQ(Text(name.GetFullPath()), _dir / "f");
  EXPECT_TRUE(missing.GetFullPath() == "g" && TAFileName("/x/y").GetFullPath() == "/x/y");
  EXPECT_EQ(Text(null.GetFullPath()), _dir.Path());

  setenv("PWD", "/nowhere", 1);
  TAFileName copy(name), assigned, added(name), set(name);
  assigned = name;
  for (TAFileName* kept : {&name, &copy, &assigned})
    EXPECT_EQ(Text(kept->GetFullPath()), _dir / "f");

  copy.Normalize();
  assigned = missing;
  added.AddExtension("");
  set.SetExtension("");
  name = "f";
  null += "f";
  for (TAFileName* changed : {&copy, &added, &set, &name, &null}) {
    EXPECT_EQ(Text(changed->GetFullPath()), "f");
  }
  EXPECT_EQ(Text(assigned.GetFullPath()), "g");
}

TEST(TAFileNameDeathTest, TemporaryNamesAreNumberedFromOneOn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a new process image has drawn no name yet
  const auto isNumber = [](const char* number) {
    const std::string stem = "/tmp/TABase_" + std::to_string(getpid()) + "_";
    return Text(TAFileName::GetTemporaryFileName()) == stem + number;
  };
  EXPECT_EXIT(_exit(isNumber("1") && isNumber("2") ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(TAFileName, TemporaryNamesDifferAcrossThreads) {
  const auto draw = [] {
    std::set<std::string> names;
    for (int i = 0; i < 1000; ++i) names.insert(Text(TAFileName::GetTemporaryFileName()));
    return names;
  };
  auto other = std::async(std::launch::async, draw);
  std::set<std::string> all = draw();
  all.merge(other.get());
  EXPECT_EQ(all.size(), 2000u);
}
