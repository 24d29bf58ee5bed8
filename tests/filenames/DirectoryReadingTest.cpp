#include "filenames/DirectoryReading.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "base/NamedLists.h"
#include "base/VorListValVorString.h"
#include "filenames/TAFileName.h"
#include "foundation/TextUtilities.h"
#include "foundation/WildcardMatching.h"
#include "support/TempDir.h"

namespace {

using Paths = std::vector<std::string>;

template <typename List>
Paths ToPaths(const List& list) {
  Paths paths;
  for (int i = 1; i <= list.Size(); ++i) paths.emplace_back(static_cast<const char*>(list[i]));
  return paths;
}

Paths Read(const std::string& pattern) {
  VorListValVorString out;
  ReadDirectory(VorString(pattern), out);
  return ToPaths(out);
}

Paths ReadNames(const std::string& pattern) {
  VorListValTAFileName out;
  ReadDirectory(pattern.c_str(), out);
  return ToPaths(out);
}

Paths ReadRecursive(const std::string& root) {
  VorListValVorString out;
  ReadRecursiveDirectory(VorString(root), out);
  return ToPaths(out);
}

Paths Below(const TempDir& dir, const Paths& names) {
  Paths paths;
  for (const std::string& name : names) paths.push_back(dir / name);
  return paths;
}

// The judges: the rules taken one step at a time.

Paths ReadStepwise(const std::string& pattern) {
  VorListValVorString components;
  const int count = Split(VorString(pattern), components, VorString("/"));
  Paths prefixes{pattern[0] == '/' ? "/" : std::filesystem::current_path().native() + "/"};
  for (int k = 1; k <= count; ++k) {
    const std::string c = static_cast<const char*>(components[k]);
    const std::string slash = k < count ? "/" : "";
    Paths next;
    for (const std::string& p : prefixes) {
      struct stat info;
      if (c.find('*') == std::string::npos) {
        if (stat((p + c).c_str(), &info) == 0) next.push_back(p + c + slash);
      } else if (DIR* stream = opendir(p.c_str())) {
        while (const dirent* entry = readdir(stream)) {
          const std::string e = entry->d_name;
          if (e != "." && e != ".." && TestMatch(e, c)) next.push_back(p + e + slash);
        }
        closedir(stream);
      }
    }
    prefixes = next;
  }
  std::sort(prefixes.begin(), prefixes.end());
  return prefixes;
}

Paths ReadNamesStepwise(const std::string& pattern) {
  Paths names;
  for (const std::string& path : ReadStepwise(pattern)) {
    names.emplace_back(static_cast<const char*>(TAFileName(path.c_str())));
  }
  std::sort(names.begin(), names.end());
  return names;
}

Paths ReadRecursiveStepwise(const std::string& root) {
  const TAFileName name(root.c_str());
  if (name.IsFile()) return {root};
  if (!name.IsDirectory()) return {};
  Paths files;
  Paths pending{root};
  while (!pending.empty()) {
    const Paths level = std::move(pending);
    pending.clear();
    for (const std::string& d : level) {
      for (const std::string& entry : ReadNamesStepwise(d + "/" + "*")) {
        (TAFileName(entry.c_str()).IsDirectory() ? pending : files).push_back(entry);
      }
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

// A tree with everything that names can hold.
class NastyTree : public testing::Test {
 protected:
  NastyTree() : _old(std::filesystem::current_path()) {
    for (const char* file : {"a.c",
                             "b.c",
                             "x.h",
                             ".hidden.c",
                             "a/f",
                             "a/include/i.h",
                             "a/.git/config",
                             "a.b/f",
                             "a-/f",
                             "ab/f",
                             "ab/include",
                             "deep/1/2/3/f",
                             ".../f",
                             "..x/f",
                             "new\nline/\xff\xfe",
                             "blank name/ f ",
                             "st*r/f",
                             "star/g",
                             "st*r/s*b/h",
                             "star/sub/k",
                             "*",
                             "back\\slash",
                             "back/slash",
                             "dir\\s/f",
                             "dir/s/g",
                             "dir/\\\\\\x",
                             "up\\..\\a",
                             "dir/.\\y"}) {
      _dir.Write(file, "");
    }
    std::filesystem::create_directory(_dir / "empty");
    std::filesystem::create_directory_symlink("deep", _dir / "link");
    std::filesystem::create_symlink("nowhere", _dir / "dangling");
    std::filesystem::create_symlink("self", _dir / "self");
    EXPECT_EQ(mkfifo((_dir / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(mknod((_dir / "a/socket").c_str(), S_IFSOCK | 0600, 0), 0);
    std::filesystem::current_path(_dir.Path());
  }
  ~NastyTree() override { std::filesystem::current_path(_old); }

  TempDir _dir;

 private:
  std::filesystem::path _old;
};

}  // namespace

TEST_F(NastyTree, PatternsSelectAsStepByStep) {
  for (const char* relative : {"*",         "*.c",         "*/*",
                               "*/include", "*/include/*", "a*/f",
                               "a.c",       "a.c/",        "a.c/*",
                               "a.c/.",     "missing",     "missing/*",
                               "*/../*.c",  "a/../b.c",    "a/./f",
                               ".",         "./*",         "..",
                               "a//f",      "//*//f//",    "**",
                               "st*r/*",    "st*r",        "*/*/*/*",
                               "back\\*",   "dir\\s/f",    "link/*/2",
                               "self/*",    "dangling",    "dang*",
                               "d*/*\\*x*", "*/\xff*",     "new\nline/\xff\xfe",
                               "...*/f",    "empty/*",     "f*o/*"}) {
    for (const std::string& pattern : {std::string(relative), _dir / "" + relative}) {
      EXPECT_EQ(Read(pattern), ReadStepwise(pattern)) << pattern;
      EXPECT_EQ(ReadNames(pattern), ReadNamesStepwise(pattern)) << pattern;
    }
  }
}

TEST_F(NastyTree, TreesAreReadAsStepByStep) {
  for (const char* relative :
       {"",     ".",       "./",    "a",    "a/",      "a//",  "./a/./include", "a/..",
        "link", "link/..", "st*r",  "s*",   "dir\\s",  "dir",  "dir/s/../",     "empty",
        "a.c",  "a.c/",    "a.c/.", "self", "missing", "fifo", ".../..",        "*"}) {
    for (const std::string& root : {std::string(relative), _dir / "" + relative}) {
      EXPECT_EQ(ReadRecursive(root), ReadRecursiveStepwise(root)) << root;
    }
  }
}

TEST_F(NastyTree, PathsAreAbsoluteAndTheWorkingDirectoryStays) {
  EXPECT_EQ(Read("*.c"), Below(_dir, {".hidden.c", "a.c", "b.c"}));
  EXPECT_EQ(Read("*/include"), Below(_dir, {"a/include", "ab/include"}));
  EXPECT_EQ(Read(""), Paths{_dir.Path() + "/"});
  EXPECT_EQ(Read("///"), Paths{"/"});
  EXPECT_EQ(ReadRecursive("deep"), Below(_dir, {"deep/1/2/3/f"}));
  EXPECT_EQ(std::filesystem::current_path(), _dir.Path());
}

TEST_F(NastyTree, EarlierContentsStayAndAreSortedIn) {
  VorListValVorString out;
  out.Append("/zz");
  out.Append("/");
  out.Append(_dir / "*.c");
  ReadDirectory(out[3], out);
  Paths expected = Below(_dir, {"*.c", ".hidden.c", "a.c", "b.c"});
  expected.insert(expected.begin(), "/");
  expected.push_back("/zz");
  EXPECT_EQ(ToPaths(out), expected);

  VorListValTAFileName names;
  names.Append(TAFileName());
  names.Append("/zz");
  names.Append("!");
  ReadDirectory("a.c", names);
  EXPECT_EQ(ToPaths(names), (Paths{"", "!", _dir / "a.c", "/zz"}));
}

TEST_F(NastyTree, RecursiveReadingEmptiesTheListFirst) {
  VorListValVorString out;
  out.Append("/zz");
  out.Append(_dir / "a");
  ReadRecursiveDirectory(out[2], out);
  EXPECT_EQ(ToPaths(out), Below(_dir, {"a/.git/config", "a/f", "a/include/i.h"}));
  ReadRecursiveDirectory("a.c/", out);
  EXPECT_EQ(ToPaths(out), Paths{"a.c/"});  // a file, as it was given
  ReadRecursiveDirectory("missing", out);
  EXPECT_EQ(out.Size(), 0);
}

// Taken step by step, these names would lead to other places or in a circle.
TEST(DirectoryReading, NamesNeverLeadOutOfTheTree) {
  const TempDir dir;
  for (const char* file :
       {"t/\\", "t/x\\..", "t/x\\..\\..\\out", "t/x\\..\\..\\out\\f", "t/a\\\\\\..",
        "t/a\\\\\\..\\a", "t/a/..\\\\\\a", "t/a/f", "t/.\\g", "out/f"}) {
    dir.Write(file, "");
  }
  EXPECT_EQ(ReadRecursive(dir / "t"), Below(dir, {"t/a/f", "t/g"}));
}

TEST(DirectoryReading, LinkCycleEndsWhereTheSystemRefuses) {
  const TempDir dir;
  dir.Write("t/f", "");
  std::filesystem::create_directory_symlink(".", dir / "t/me");
  const Paths files = ReadRecursive(dir / "t");
  EXPECT_EQ(files, ReadRecursiveStepwise(dir / "t"));
  EXPECT_EQ(files.size(), 42u);  // f at 41 levels, and the link that is one too many
}

TEST(DirectoryReading, TreeDeeperThanAPathEndsAtTheLongestPath) {
  const TempDir dir;
  const std::filesystem::path old = std::filesystem::current_path();
  std::filesystem::current_path(dir.Path());
  for (int i = 0; i < 22; ++i) {
    ASSERT_EQ(mkdir(std::string(200, 'd').c_str(), 0700), 0);
    ASSERT_EQ(chdir(std::string(200, 'd').c_str()), 0);
    std::ofstream("f").close();
  }
  std::filesystem::current_path(old);
  const Paths files = ReadRecursive(dir.Path());
  EXPECT_EQ(files, ReadRecursiveStepwise(dir.Path()));
  EXPECT_EQ(files.size(), 21u);  // the last one is the directory with a path too long for stat
}

TEST(DirectoryReading, UnreadableAndUnsearchableDirectories) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  const TempDir dir;
  dir.Write("unreadable/f", "");
  dir.Write("unsearchable/f", "");
  dir.Write("unsearchable/sub/f", "");
  ASSERT_EQ(chmod((dir / "unreadable").c_str(), 0300), 0);
  ASSERT_EQ(chmod((dir / "unsearchable").c_str(), 0600), 0);
  EXPECT_EQ(ReadRecursive(dir.Path()), ReadRecursiveStepwise(dir.Path()));
  EXPECT_EQ(ReadRecursive(dir.Path()), Below(dir, {"unsearchable/f", "unsearchable/sub"}));
  EXPECT_EQ(Read(dir / "*/*"), Below(dir, {"unsearchable/f", "unsearchable/sub"}));
  chmod((dir / "unreadable").c_str(), 0700);
  chmod((dir / "unsearchable").c_str(), 0700);
}
