#include "filenames/DirectoryReading.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

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

template <typename List>
Paths Result(void (*read)(const VorString& what, List& out), const std::string& what) {
  List out;
  read(VorString(what), out);
  return ToPaths(out);
}
Paths Read(const std::string& pattern) {
  return Result<VorListValVorString>(ReadDirectory, pattern);
}
Paths ReadRecursive(const std::string& root) {
  return Result<VorListValVorString>(ReadRecursiveDirectory, root);
}

Paths Below(const TempDir& dir, const Paths& names) {
  Paths paths;
  for (const std::string& name : names) paths.push_back(dir / name);
  return paths;
}

// The judges: the rules taken one step at a time.

Paths ReadStepwise(const std::string& pattern) {
  namespace fs = std::filesystem;
  VorListValVorString components;
  const int count = Split(pattern, components, "/");
  Paths prefixes{pattern[0] == '/' ? "/" : fs::current_path().native() + "/"};
  for (int k = 1; k <= count; ++k) {
    const std::string c = static_cast<const char*>(components[k]);
    const std::string slash = k < count ? "/" : "";
    Paths next;
    for (const std::string& p : prefixes) {
      std::error_code error;  // an iterator that cannot start is at its end
      if (c.find('*') == std::string::npos) {
        if (fs::exists(p + c, error)) next.push_back(p + c + slash);
        continue;
      }
      for (const auto& entry : fs::directory_iterator(p, error)) {
        const std::string e = entry.path().filename();
        if (TestMatch(e, c)) next.push_back(p + e + slash);
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
  Paths files, pending{root};
  while (!pending.empty()) {
    const std::string d = pending.back();
    pending.pop_back();
    for (const std::string& entry : ReadNamesStepwise(d + "/" + "*")) {
      (TAFileName(entry.c_str()).IsDirectory() ? pending : files).push_back(entry);
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

// A tree with everything that names can hold.
class NastyTree : public testing::Test {
 protected:
  NastyTree() {
    std::istringstream names(
        "a.c|b.c|x.h|.hidden.c|a/f|a/include/i.h|a/.git/config|a.b/f|a-/f|ab/f|ab/include|"
        "deep/1/2/3/f|.../f|..x/f|new\nline/\xff\xfe| blank / f |st*r/f|star/g|st*r/s*b/h|"
        "star/sub/k|*|back\\slash|back/slash|dir\\s/f|dir/s/g|dir/\\\\\\x|up\\..\\a|dir/.\\y");
    for (std::string name; std::getline(names, name, '|');) _dir.Write(name, "");
    std::filesystem::current_path(_dir.Path());
    std::filesystem::create_directory("empty");
    std::filesystem::create_directory_symlink("deep", "link");
    std::filesystem::create_symlink("nowhere", "dangling");
    std::filesystem::create_symlink("self", "self");
    EXPECT_EQ(mkfifo("fifo", 0600), 0);
    EXPECT_EQ(mknod("a/socket", S_IFSOCK | 0600, 0), 0);
  }
  ~NastyTree() override { std::filesystem::current_path(_old); }

  TempDir _dir;

 private:
  std::filesystem::path _old = std::filesystem::current_path();
};

}  // namespace

TEST_F(NastyTree, AgreesWithAStepByStepReading) {
  for (const char* relative :
       {"",         "///",      "*",         "*.c",     "*/*",       "*/include", "a*/f",
        "a.c",      "a.c/",     "a.c/*",     "missing", "missing/*", "*/../*.c",  "a/./f",
        ".",        "//*//f//", "st*r/*",    "st*r",    "*/*/*/*",   "back\\*",   "self/*",
        "link/*/2", "dang*",    "d*/*\\*x*", "*/\xff*", "f*o/*"}) {
    for (const std::string& pattern : {std::string(relative), _dir / "" + relative}) {
      EXPECT_EQ(Read(pattern), ReadStepwise(pattern)) << pattern;
      ASSERT_EQ(std::filesystem::current_path(), _dir.Path()) << pattern;
      EXPECT_EQ(Result<VorListValTAFileName>(ReadDirectory, pattern), ReadNamesStepwise(pattern))
          << pattern;
    }
  }
  for (const char* relative :
       {"", ".", "a//", "./a/./include", "a/..", "link", "link/..", "st*r", "s*", "dir\\s", "dir",
        "empty", "a.c/.", "self", "missing", "fifo", ".../.."}) {
    for (const std::string& root : {std::string(relative), _dir / "" + relative}) {
      EXPECT_EQ(ReadRecursive(root), ReadRecursiveStepwise(root)) << root;
    }
  }
}

TEST_F(NastyTree, OnlyRecursiveReadingEmptiesTheList) {
  VorListValVorString out;
  for (const std::string& text : Paths{"~", "/", _dir / "*.h"}) out.Append(text);
  ReadDirectory(out[3], out);
  EXPECT_EQ(ToPaths(out), (Paths{"/", _dir / "*.h", _dir / "x.h", "~"}));

  out.Append(_dir / "a");
  ReadRecursiveDirectory(out[5], out);
  EXPECT_EQ(ToPaths(out), Below(_dir, {"a/.git/config", "a/f", "a/include/i.h"}));
  EXPECT_EQ(ReadRecursive("a.c/"), Paths{"a.c/"});  // a file, as it was given
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

TEST_F(NastyTree, LinkCyclesAndEndlessPathsEndWhereTheSystemRefuses) {
  std::filesystem::create_directory_symlink(".", "empty/me");
  EXPECT_EQ(ReadRecursive("empty").size(), 1u);  // the link that is one too many

  for (int i = 0; i < 23; ++i) {
    const std::string name = i == 0 ? "long" : std::string(200, 'd');
    std::filesystem::create_directory(name);
    std::filesystem::current_path(name);
    std::ofstream("f").close();
  }
  std::filesystem::current_path(_dir.Path());
  const Paths files = ReadRecursive(_dir / "long");
  EXPECT_EQ(files, ReadRecursiveStepwise(_dir / "long"));
  EXPECT_LT(files.size(), 23u);  // by the length of the path so far
}

TEST(DirectoryReading, UnreadableAndUnsearchableDirectories) {
  const bool isRoot = geteuid() == 0;
  ASSERT_EQ(isRoot ? seteuid(65534) : 0, 0);  // root may read everything
  if (euidaccess(std::filesystem::temp_directory_path().c_str(), W_OK | X_OK) != 0) {
    ASSERT_EQ(seteuid(0), 0);
    GTEST_SKIP() << "only root may write to the temporary directory";
  }
  {
    const TempDir dir;
    for (const char* file : {"unread/f", "unsearch/f", "unsearch/sub/f"}) dir.Write(file, "");
    ASSERT_EQ(chmod((dir / "unread").c_str(), 0300), 0);
    ASSERT_EQ(chmod((dir / "unsearch").c_str(), 0600), 0);
    EXPECT_EQ(ReadRecursive(dir.Path()), Below(dir, {"unsearch/f", "unsearch/sub"}));
    EXPECT_EQ(Read(dir / "*/*"), Below(dir, {"unsearch/f", "unsearch/sub"}));
    EXPECT_EQ(chmod((dir / "unread").c_str(), 0700), 0);
    EXPECT_EQ(chmod((dir / "unsearch").c_str(), 0700), 0);
  }
  ASSERT_EQ(isRoot ? seteuid(0) : 0, 0);
}
