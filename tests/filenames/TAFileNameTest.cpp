#include "filenames/TAFileName.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/NamedLists.h"
#include "support/TempDir.h"

namespace {

std::string Text(const TAFileName& name) {
  return static_cast<const char*>(name);
}

std::string Repeat(const std::string& piece, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

struct TextRow {
  const char* given;
  const char* expected;
};

// Sets an environment variable, or removes it with null, until the end of the scope.
class ScopedPwd {
 public:
  explicit ScopedPwd(const char* value) : _old(getenv("PWD") ? getenv("PWD") : "") { Set(value); }
  ~ScopedPwd() { Set(_old.c_str()); }
  ScopedPwd(const ScopedPwd&) = delete;
  ScopedPwd& operator=(const ScopedPwd&) = delete;

 private:
  static void Set(const char* value) { value ? setenv("PWD", value, 1) : unsetenv("PWD"); }
  std::string _old;
};

class ScopedWorkDir {
 public:
  explicit ScopedWorkDir(const std::string& path) : _old(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~ScopedWorkDir() { std::filesystem::current_path(_old); }

 private:
  std::filesystem::path _old;
};

}  // namespace

TEST(TAFileName, BringsTextIntoNormalForm) {
  const TextRow rows[] = {
      {"a", "a"},
      {"/", "/"},
      {".", "."},
      {"..", ".."},
      {"a\\b\\c", "a/b/c"},
      {"\\\\host\\share", "/host/share"},
      // Slash runs are halved, never folded whole.
      {"a//b", "a/b"},
      {"a///b", "a//b"},
      {"a////b", "a//b"},
      {"//", "/"},
      {"///", "/"},
      {"////a", "//a"},
      {"a//", "a"},
      {"a///", "a/"},
      // Steps to the directory itself.
      {"./a/./b/", "a/b"},
      {"a/b/.", "a/b"},
      {"/./", "/"},
      {"/././.", "/."},
      {"/.", "/."},
      {"./", "."},
      {"./.", "."},
      {"././a", "a"},
      {"a/././././b", "a/b"},
      {".//./a", "a"},
      {"/./.hidden", "/.hidden"},
      // Steps to the parent.
      {"a/b/../c", "a/c"},
      {"a/b/c/../../d", "a/d"},
      {"a/b/..", "a"},
      {"/a/..", "/"},
      {"x/../y", "y"},
      {"x/..", ""},
      {"x/../", ""},
      {"x/..////y", "/y"},
      {"../x", "../x"},
      {"./..", ".."},
      {"a/../../b", "../b"},
      {"/../a", "/../a"},
      {"/../../a", "/../../a"},
      {"/a/../../b", "/../b"},
      {"a/.../../b", "a/.../../b"},
      {"a/.x/../b", "a/b"},
      {"a/..b", "a/..b"},
      {"a/b../c", "a/b../c"},
      {"a///../b", "a//../b"},
      {"a/b///../../c", "a/b//../../c"},
      {"a\\..\\b", "b"},
      {"a/./../b", "b"},
      {"a/../.", ""},
      // Bytes that mean nothing here stay.
      {"a*\n\xff b", "a*\n\xff b"},
  };
  for (const TextRow& row : rows) {
    EXPECT_EQ(Text(TAFileName(row.given)), row.expected) << "of " << row.given;
  }
}

TEST(TAFileName, FoldsMegabytesInLinearTime) {
  constexpr std::size_t kMany = 1 << 20;
  EXPECT_EQ(Text(TAFileName(VorString(Repeat("/", kMany)))).size(), kMany / 2 - 1);
  EXPECT_EQ(Text(TAFileName(VorString(Repeat("/.", kMany) + "/a"))), "/a");
  EXPECT_EQ(Text(TAFileName(VorString(Repeat("/a", kMany) + Repeat("/..", kMany)))), "/");
  EXPECT_EQ(Text(TAFileName(VorString(Repeat("a/../", kMany)))), "");
  const TAFileName dots(VorString(Repeat(".", kMany) + Repeat("/x/../..", kMany)));
  EXPECT_EQ(Text(dots), Repeat(".", kMany) + Repeat("/..", kMany));
  const TAFileName deep(VorString(Repeat("/a", kMany)));
  EXPECT_EQ(deep.IsUnderDirectory("/x"), 0);
  EXPECT_EQ(deep.IsUnderDirectory("/a"), 1);
}

TEST(TAFileName, NormalizeOfASharedTextLeavesTheCopiesAlone) {
  TAFileName name("a///b");
  const TAFileName copy(name);
  name.Normalize();
  EXPECT_EQ(Text(name), "a/b");
  EXPECT_EQ(Text(copy), "a//b");
}

TEST(TAFileName, NullNameComesFromNoText) {
  EXPECT_TRUE(TAFileName().IsNull());
  EXPECT_TRUE(TAFileName(static_cast<const char*>(nullptr)).IsNull());
  EXPECT_TRUE(TAFileName("").IsNull());
  EXPECT_TRUE(TAFileName(VorString()).IsNull());
  EXPECT_TRUE(TAFileName("abc", 0).IsNull());
  EXPECT_FALSE(TAFileName("x/..").IsNull());  // an empty text is a text
  EXPECT_STREQ(TAFileName(), "");
  TAFileName name("a");
  name = "";
  EXPECT_TRUE(name.IsNull());
}

TEST(TAFileName, NullNameHasHarmlessAnswers) {
  TAFileName null;
  EXPECT_EQ(null.IsFile(), 0);
  EXPECT_EQ(null.IsDirectory(), 0);
  EXPECT_EQ(null.IsUnderDirectory("a"), 0);
  EXPECT_EQ(TAFileName("a").IsUnderDirectory(null), 0);
  EXPECT_TRUE(null.dirname(1).IsNull());
  EXPECT_TRUE(null.basename(1).IsNull());
  EXPECT_EQ(null.Getdirname(1), "");
  EXPECT_EQ(null.GetExtension(), "");
  EXPECT_EQ(null.Delete(), 0);
  EXPECT_EQ(null.CreateDirectory(), 1);
  EXPECT_EQ(null.CreateNotExistingDirectory(), -2);
  EXPECT_EQ(null.CreateRecursiveDirectory(), 0);
  null.SetAsExecutable();
  null.Normalize();
  null.AddExtension("");
  EXPECT_TRUE(null.IsNull());
  null.SetExtension("./x");
  EXPECT_EQ(Text(null), "./x");  // as it is, not in normal form
}

TEST(TAFileName, TakesTheFirstBytesOfAText) {
  EXPECT_EQ(Text(TAFileName("a/b/c", 3)), "a/b");
  EXPECT_EQ(Text(TAFileName("a/b/c", 2)), "a");
  EXPECT_EQ(Text(TAFileName("ab", 100)), "ab");
  const char noTerminator[] = {'a', '/', '.'};
  EXPECT_EQ(Text(TAFileName(noTerminator, 3)), "a");
}

TEST(TAFileName, CopiesShareUntilOneChanges) {
  TAFileName name("dir/f.c");
  TAFileName copy(name);
  EXPECT_EQ(static_cast<const char*>(name), static_cast<const char*>(copy));
  TAFileName other("x");
  other = name;
  copy.AddExtension(".bak");
  other.SetExtension("o");
  name += "g";
  EXPECT_EQ(Text(copy), "dir/f.c.bak");
  EXPECT_EQ(Text(other), "dir/f.o");
  EXPECT_EQ(Text(name), "dir/f.c/g");
}

TEST(TAFileName, TakesItsOwnText) {
  TAFileName name("a/b.c/d");
  TAFileName& self = name;
  name = self;
  EXPECT_EQ(Text(name), "a/b.c/d");
  name = static_cast<const char*>(name) + 2;
  EXPECT_EQ(Text(name), "b.c/d");
  name += name;
  EXPECT_EQ(Text(name), "b.c/d/b.c/d");
  name.AddExtension(VorString(name));
  EXPECT_EQ(Text(name), "b.c/d/b.c/db.c/d/b.c/d");
  TAFileName moved(std::move(name));
  EXPECT_TRUE(name.IsNull());
  EXPECT_EQ(Text(moved.basename(2)), "b.c");
}

TEST(TAFileName, ComparesTextsWithNamesAndStrings) {
  const TAFileName name("a/b");
  EXPECT_TRUE(name == TAFileName("a//b"));
  EXPECT_TRUE(name == "a/b" && "a/b" == name && name == VorString("a/b"));
  EXPECT_TRUE(name != "a//b");  // a plain text is not normalised first
  EXPECT_TRUE(name != TAFileName("A/B"));
  EXPECT_EQ(name.IsEqual(TAFileName("a/b")), 1);
  EXPECT_EQ(name.IsEqual("a"), 0);
  EXPECT_TRUE(TAFileName("a\x7f") < TAFileName("a\x80"));  // by unsigned byte
}

TEST(TAFileName, LivesInItsLists) {
  VorListValTAFileName list;
  for (const char* text : {"b", "a/b", "a.b", "B"}) list.Append(text);
  VorListValTAFileName copy(list);
  EXPECT_TRUE(copy == list);
  copy.QuickSort(TAFileName::Compare);
  EXPECT_TRUE(copy != list);
  std::string all;
  for (int i = 1; i <= copy.Size(); ++i) all += Text(copy[i]) + " ";
  EXPECT_EQ(all, "B a.b a/b b ");
}

TEST(TAFileName, Joins) {
  EXPECT_EQ(Text(TAFileName("a") + "b"), "a/b");
  EXPECT_EQ(Text(TAFileName("a/b") + "../c"), "a/c");
  EXPECT_EQ(Text(TAFileName("/") + "c"), "/c");
  EXPECT_EQ(Text(TAFileName("a") + ""), "a");
  EXPECT_EQ(Text(TAFileName("a") + VorString("/b")), "a/b");
  EXPECT_EQ(Text(TAFileName() + "./b/"), "b");
  const std::string longName(5000, 'n');
  EXPECT_EQ(Text(TAFileName("d") + VorString(longName)), "d/" + longName);
  TAFileName name;
  name += "x/";
  name += "y";
  EXPECT_EQ(Text(name), "x/y");
}

TEST(TAFileName, GivesComponentsFromTheEnd) {
  const struct {
    const char* name;
    int n;
    const char* base;
    const char* directory;  // null for the null name
  } rows[] = {
      {"/usr/lib/x.so", 1, "x.so", "/usr/lib"},
      {"/usr/lib/x.so", 2, "lib", "/usr"},
      {"/usr/lib/x.so", 3, "usr", nullptr},
      {"/usr/lib/x.so", 5, "/usr/lib/x.so", nullptr},
      {"a/b/c", 2, "b", "a"},
      {"a/b/c", 3, "a/b/c", nullptr},
      {"/usr", 1, "usr", nullptr},
      {"a", 1, "a", nullptr},
      {"/", 1, "", nullptr},
      {"a///b", 1, "b", "a"},
      {"a///b", 2, "", "a"},  // an empty component counts
      {"a/b", 0, "b", "a/b"},
      {"..", 1, "..", nullptr},
  };
  for (const auto& row : rows) {
    TAFileName name(row.name);
    EXPECT_EQ(Text(name.basename(row.n)), row.base) << row.name << ", " << row.n;
    EXPECT_EQ(Text(name.dirname(row.n)), row.directory ? row.directory : "") << row.name;
    EXPECT_EQ(name.dirname(row.n).IsNull(), row.directory == nullptr) << row.name << ", " << row.n;
    EXPECT_EQ(name.Getdirname(row.n), row.directory) << row.name << ", " << row.n;
  }
}

TEST(TAFileName, IsUnderItselfAndItsParents) {
  const TAFileName name("/a/b/c");
  EXPECT_EQ(name.IsUnderDirectory("/a/b/c"), 1);
  EXPECT_EQ(name.IsUnderDirectory("/a/b"), 1);
  EXPECT_EQ(name.IsUnderDirectory("/a"), 1);
  EXPECT_EQ(name.IsUnderDirectory("/"), 0);  // the root is nobody's dirname
  EXPECT_EQ(name.IsUnderDirectory("/x"), 0);
  EXPECT_EQ(TAFileName("/ab/c").IsUnderDirectory("/a"), 0);
  EXPECT_EQ(TAFileName("a////////b/c").IsUnderDirectory("a///b"), 1);  // each parent folds anew
}

TEST(TAFileName, Extensions) {
  const struct {
    const char* name;
    const char* extension;
    const char* afterSet;  // SetExtension("o")
  } rows[] = {
      {"a.tar.gz", "gz", "a.tar.o"},
      {"Makefile", "", "Makefileo"},
      {"dir.d/file", "d/file", "dir.o"},
      {"f.c", "c", "f.o"},
      {"f.", "", "f.o"},
      {".x", "x", ".o"},
  };
  for (const auto& row : rows) {
    TAFileName name(row.name);
    EXPECT_EQ(name.GetExtension(), row.extension) << row.name;
    EXPECT_EQ(name.HasExtension(row.extension), 1) << row.name;
    EXPECT_EQ(name.HasExtension("oo"), 0) << row.name;
    EXPECT_EQ(name.HasExtension(nullptr), 0) << row.name;
    name.SetExtension("o");
    EXPECT_EQ(Text(name), row.afterSet);
  }
  TAFileName name("f.c");
  name.AddExtension(".bak");
  EXPECT_EQ(Text(name), "f.c.bak");
  name.AddExtension("//");
  EXPECT_EQ(Text(name), "f.c.bak//");  // not in normal form until somebody asks
}

TEST(TAFileNameOnDisk, TellsFilesFromDirectories) {
  const TempDir dir;
  const TAFileName file(dir.Write("f", "").c_str());
  std::filesystem::create_directory_symlink(dir.Path(), dir / "link");
  EXPECT_EQ(file.IsFile(), 1);
  EXPECT_EQ(file.IsDirectory(), 0);
  EXPECT_EQ(TAFileName((dir / "link").c_str()).IsDirectory(), 1);
  EXPECT_EQ(TAFileName(dir.Path().c_str()).IsFile(), 0);
  EXPECT_EQ(TAFileName((dir / "missing").c_str()).IsFile(), 0);
  EXPECT_EQ(TAFileName("/dev/null").IsFile(), 0);
}

TEST(TAFileNameOnDisk, SocketHasBothModeBits) {
  const TempDir dir;
  sockaddr_un address = {AF_UNIX, {}};
  (dir / "s").copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(TAFileName(address.sun_path).IsFile(), 1);
  EXPECT_EQ(TAFileName(address.sun_path).IsDirectory(), 1);
  close(fd);
}

TEST(TAFileNameOnDisk, MakesDirectories) {
  const TempDir dir;
  const TAFileName root(dir.Path().c_str());
  const TAFileName one = root + "one";
  EXPECT_EQ(one.CreateDirectory(), 0);
  EXPECT_EQ(one.CreateDirectory(), -1);
  EXPECT_EQ(one.CreateNotExistingDirectory(), 1);
  EXPECT_EQ((root + "two").CreateNotExistingDirectory(), 0);
  EXPECT_EQ((root + "no/where").CreateNotExistingDirectory(), -1);

  EXPECT_EQ((root + "a/b/c").CreateRecursiveDirectory(), 0);
  EXPECT_EQ((root + "a/b/c").IsDirectory(), 1);
  EXPECT_EQ((root + "a/b/c").CreateRecursiveDirectory(), 0);
}

TEST(TAFileNameOnDisk, RecursiveDirectoryTellsWhichLevelFailed) {
  const TempDir dir;
  const ScopedWorkDir inside(dir.Path());
  dir.Write("file", "");
  EXPECT_EQ(TAFileName("file").CreateRecursiveDirectory(), 0);  // no parent: whatever mkdir says
  EXPECT_EQ(TAFileName("file/x").CreateRecursiveDirectory(), -1);
  EXPECT_EQ(TAFileName("file/x/y").CreateRecursiveDirectory(), 1);
  const TAFileName deep(VorString(Repeat("d/", 1 << 16)));  // made as deep as the system goes
  EXPECT_EQ(deep.CreateRecursiveDirectory(), 1);
  EXPECT_EQ(TAFileName(VorString(Repeat("d/", 2047) + "d")).IsDirectory(), 1);
}

TEST(TAFileNameOnDisk, AddsTheOwnersExecuteBitOnly) {
  const TempDir dir;
  const std::string path = dir.Write("tool", "");
  ASSERT_EQ(chmod(path.c_str(), 02640), 0);
  TAFileName(path.c_str()).SetAsExecutable();
  struct stat info;
  ASSERT_EQ(stat(path.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 02740u);
}

TEST(TAFileNameOnDisk, DeletesFiles) {
  const TempDir dir;
  const TAFileName file(dir.Write("f", "").c_str());
  EXPECT_EQ(file.Delete(), 0);
  EXPECT_EQ(file.Delete(), -1);
}

TEST(TAFileNameOnDisk, WorkDirIsTheShellsIfItSaysSo) {
  const TempDir dir;
  const ScopedWorkDir inside(dir.Path());
  {
    const ScopedPwd pwd("/some//where/");
    EXPECT_EQ(Text(TAFileName::GetWorkDir()), "/some/where");
  }
  const ScopedPwd pwd(nullptr);
  EXPECT_EQ(Text(TAFileName::GetWorkDir()), dir.Path());
  dir.Write("sub/f", "");
  EXPECT_EQ(TAFileName::SetWorkDir("sub"), 0);
  EXPECT_EQ(Text(TAFileName::GetWorkDir()), dir / "sub");
  EXPECT_EQ(TAFileName::SetWorkDir("sub"), -1);
  EXPECT_EQ(TAFileName::SetWorkDir(TAFileName()), -1);
}

TEST(TAFileNameOnDisk, WorkDirOf1024BytesIsTooLong) {
  const TempDir dir;
  const ScopedWorkDir inside(dir.Path());
  const ScopedPwd pwd(nullptr);
  std::filesystem::path deep = dir.Path();
  while (deep.native().size() < 1024 - 2 - 200) deep /= std::string(200, 'd');
  deep /= std::string(1023 - 1 - deep.native().size(), 'e');
  std::filesystem::create_directories(deep);
  std::filesystem::current_path(deep);
  EXPECT_EQ(Text(TAFileName::GetWorkDir()), deep.native());  // 1023 bytes and the terminator
  std::filesystem::create_directory("f");
  std::filesystem::current_path("f");
  EXPECT_TRUE(TAFileName::GetWorkDir().IsNull());
}

TEST(TAFileNameOnDisk, FullPathIsKeptUntilTheTextChanges) {
  const TempDir dir;
  dir.Write("f", "");
  const ScopedWorkDir inside(dir.Path());
  TAFileName name("f");
  TAFileName missing("g");
  TAFileName absolute("/x/y");
  TAFileName null;
  {
    const ScopedPwd pwd(dir.Path().c_str());
    EXPECT_EQ(Text(name.GetFullPath()), dir / "f");
    EXPECT_EQ(Text(missing.GetFullPath()), "g");
    EXPECT_EQ(Text(absolute.GetFullPath()), "/x/y");
    EXPECT_EQ(Text(null.GetFullPath()), dir.Path());
  }
  const ScopedPwd pwd("/nowhere");
  EXPECT_EQ(Text(name.GetFullPath()), dir / "f");
  EXPECT_EQ(Text(null.GetFullPath()), dir.Path());
  TAFileName copy(name);
  TAFileName assigned("h");
  assigned = name;
  EXPECT_EQ(Text(copy.GetFullPath()), dir / "f");  // a copy takes the answer along
  EXPECT_EQ(Text(assigned.GetFullPath()), dir / "f");

  copy.Normalize();
  EXPECT_EQ(Text(copy.GetFullPath()), "f");
  assigned.AddExtension("");
  EXPECT_EQ(Text(assigned.GetFullPath()), "f");
  assigned = missing;
  EXPECT_EQ(Text(assigned.GetFullPath()), "g");
  name = "f";
  EXPECT_EQ(Text(name.GetFullPath()), "f");
  null += "f";
  EXPECT_EQ(Text(null.GetFullPath()), "f");
  absolute += "z";
  EXPECT_EQ(Text(absolute.GetFullPath()), "/x/y/z");
}

TEST(TAFileNameDeathTest, TemporaryNamesAreNumberedFromOneOn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a new process image has drawn no name yet
  EXPECT_EXIT(
      {
        const std::string stem = "/tmp/TABase_" + std::to_string(getpid()) + "_";
        const bool isFirst = Text(TAFileName::GetTemporaryFileName()) == stem + "1";
        const bool isSecond = Text(TAFileName::GetTemporaryFileName()) == stem + "2";
        _exit(isFirst && isSecond ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(TAFileName, TemporaryNamesDifferAcrossThreads) {
  std::vector<std::string> names[4];
  std::vector<std::thread> threads;
  for (std::vector<std::string>& drawn : names) {
    threads.emplace_back([&drawn] {
      for (int i = 0; i < 1000; ++i) drawn.push_back(Text(TAFileName::GetTemporaryFileName()));
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> all;
  for (const std::vector<std::string>& drawn : names) all.insert(drawn.begin(), drawn.end());
  EXPECT_EQ(all.size(), 4000u);
}
