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

const void* Address(const TAFileName& name) {
  return static_cast<const char*>(name);
}

// A name that is not in normal form is brought there where it is; only one that shares its text and
// changes gets a new one.
void ExpectNormalizedInPlace(const std::string& text, const std::string& normal) {
  TAFileName own;
  own.AddExtension(VorString(text));
  const void* const place = Address(own);
  TAFileName shared(own);
  shared.Normalize();
  EXPECT_EQ(Text(shared), normal);
  EXPECT_EQ(Address(shared) == place, text == normal) << text;
  EXPECT_EQ(Text(own), text);
  shared = TAFileName();
  own.Normalize();
  EXPECT_EQ(Text(own), normal);
  EXPECT_EQ(Address(own), place) << text;
}

// A temporary working directory, which is not in PWD.
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
    const std::string text = row.substr(0, equals), normal = row.substr(equals + 1);
    EXPECT_EQ(Text(TAFileName(row.c_str(), static_cast<int>(equals))), normal) << row;
    ExpectNormalizedInPlace(text, normal);
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
  for (const TAFileName& name : {null, TAFileName(nullptr), TAFileName("abc", 0), null.dirname(1)})
    EXPECT_EQ(name.IsNull(), 1);
  EXPECT_EQ(TAFileName("x/..").IsNull(), 0);  // an empty text is a text
  EXPECT_STREQ(null, "");
  for (const int result : {null.IsFile(), null.IsDirectory(), null.IsUnderDirectory("a"),
                           null.Delete(), null.CreateRecursiveDirectory()}) {
    EXPECT_EQ(result, 0);
  }
  EXPECT_EQ(null.CreateDirectory(), 1);
  EXPECT_EQ(null.CreateNotExistingDirectory(), -2);
  null.SetAsExecutable();
  null.Normalize();
  null.AddExtension("");
  EXPECT_EQ(null.IsNull(), 1);
  null.SetExtension("./x");
  EXPECT_EQ(Text(null), "./x");  // as it is, not in normal form
}

TEST(TAFileName, CopiesShareUntilOneChanges) {
  TAFileName name("dir///f.c");
  TAFileName added(name), set, joined(name), folded(name);
  set = name;
  EXPECT_EQ(Address(name), Address(set));
  added.AddExtension(".bak//");
  set.SetExtension("o");
  joined += "g";
  folded.Normalize();
  EXPECT_EQ(Text(added), "dir//f.c.bak//");
  EXPECT_EQ(Text(set), "dir//f.o");
  EXPECT_EQ(Text(joined), "dir/f.c/g");
  EXPECT_EQ(Text(folded), "dir/f.c");
  EXPECT_EQ(Text(name), "dir//f.c");
}

TEST(TAFileName, CopiesMayGoToOtherThreads) {
  TAFileName name("dir///f.c");
  const auto countWrong = [&name = std::as_const(name)] {
    int wrong = 0;
    for (int i = 0; i < 20000; ++i) {
      TAFileName copy(name), second(copy);
      copy.Normalize();
      wrong += Text(copy) != "dir/f.c" || Text(second) != "dir//f.c";
    }
    return wrong;
  };
  std::future<int> other = std::async(std::launch::async, countWrong);
  EXPECT_EQ(countWrong(), 0);
  EXPECT_EQ(other.get(), 0);
  const void* const place = Address(name);
  name.Normalize();
  EXPECT_EQ(Address(name), place);  // in place, since no copy is counted any more
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
  EXPECT_EQ(name.IsEqual("a//b"), 1);
  EXPECT_EQ("a/b", name);
  EXPECT_EQ(name, VorString("a/b"));
  EXPECT_NE(name, "a//b");                              // a plain text is not normalised first
  EXPECT_LT(TAFileName("a\x7f"), TAFileName("a\x80"));  // by unsigned byte
}

TEST(TAFileName, ReturnsComponentsFromTheEnd) {
  struct Row {
    const char* name;
    int n;
    const char* base;
    const char* directory;  // "" for the null name
  };
  for (const auto& [name, n, base, directory] :
       {Row{"/usr/lib/x.so", 1, "x.so", "/usr/lib"}, Row{"/usr/lib/x.so", 2, "lib", "/usr"},
        Row{"/usr/lib/x.so", 3, "usr", ""}, Row{"/usr/lib/x.so", 5, "/usr/lib/x.so", ""},
        Row{"a", 1, "a", ""}, Row{"/", 1, "", ""}, Row{"a/b/c", 2, "b", "a"},
        Row{"a///b", 1, "b", "a"}, Row{"a///b", 2, "", "a"}, Row{"a/b", 0, "b", "a/b"}}) {
    SCOPED_TRACE(testing::Message() << name << " " << n);
    EXPECT_EQ(TAFileName(name).basename(n), base);
    EXPECT_EQ(TAFileName(name).dirname(n), directory);
    EXPECT_EQ(TAFileName(name).dirname(n).IsNull(), *directory == '\0');
    EXPECT_EQ(TAFileName(name).Getdirname(n), directory);
  }
}

TEST(TAFileName, IsUnderItselfAndItsParents) {
  const TAFileName name("/usr/lib/x.so");
  for (const char* parent : {"/usr/lib/x.so", "/usr"}) EXPECT_EQ(name.IsUnderDirectory(parent), 1);
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
    EXPECT_EQ(name.HasExtension(extension), 1) << text;
    EXPECT_EQ(name.HasExtension("oo"), 0) << text;
    EXPECT_EQ(name.HasExtension(nullptr), 0) << text;
    name.SetExtension("o");
    EXPECT_EQ(Text(name), afterSet);
  }
}

TEST_F(TAFileNameOnDisk, MakesDirectoriesAndReportsWhichLevelFailed) {
  TAFileName one("one");
  EXPECT_EQ(one.CreateDirectory(), 0);
  EXPECT_EQ(one.CreateDirectory(), -1);
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

TEST_F(TAFileNameOnDisk, DistinguishesFilesFromDirectoriesAndChangesThem) {
  const TAFileName file(_dir.Write("f", "").c_str());
  ASSERT_EQ(chmod(file, 02640), 0);
  file.SetAsExecutable();
  struct stat info;
  ASSERT_EQ(stat(file, &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 02740u);
  std::filesystem::create_directory_symlink(".", "link");
  ASSERT_EQ(mknod("socket", S_IFSOCK | 0600, 0), 0);  // has both mode bits
  for (const char* name : {"link", "socket"}) EXPECT_EQ(TAFileName(name).IsDirectory(), 1);
  EXPECT_EQ(file.IsDirectory(), 0);
  EXPECT_EQ(file.Delete(), 0);
  EXPECT_EQ(file.Delete(), -1);
}

TEST_F(TAFileNameOnDisk, WorkDirIsThatOfTheShellElseAtMost1023Bytes) {
  std::filesystem::create_directory("sub");
  EXPECT_EQ(TAFileName::SetWorkDir("sub"), 0);
  EXPECT_EQ(Text(TAFileName::GetWorkDir()), _dir / "sub");
  EXPECT_EQ(TAFileName::SetWorkDir("sub"), -1);
  EXPECT_EQ(TAFileName::SetWorkDir(TAFileName()), -1);
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
  EXPECT_EQ(Text(missing.GetFullPath()), "g");
  EXPECT_EQ(Text(TAFileName("/x/y").GetFullPath()), "/x/y");
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
