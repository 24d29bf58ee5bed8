#include "base/VorFCopy.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "base/VorUnicodeString.h"
#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

int Copy(const std::string& from, const std::string& to, int replace = 1) {
  return VorFCopy(VorUnicodeString(from.c_str()), VorUnicodeString(to.c_str()), replace);
}

}  // namespace

TEST(VorFCopy, CopiesContentAndPermissions) {
  TempDir dir;
  const std::string content = std::string(700000, 'x') + std::string("\0end", 4);
  const std::string from = dir.Write("from \xff", content);
  chmod(from.c_str(), 04751);
  dir.Write("to", "something longer than nothing");
  ASSERT_EQ(Copy(from, dir / "to"), 0);
  EXPECT_EQ(dir.Read("to"), content);
  struct stat info;
  ASSERT_EQ(stat((dir / "to").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0751u);
}

TEST(VorFCopy, CopiesFilesWithoutAKnownSize) {
  TempDir dir;
  ASSERT_EQ(Copy("/proc/self/status", dir / "to"), 0);
  EXPECT_NE(dir.Read("to").find("VmSize"), std::string::npos);
}

TEST(VorFCopy, RefusesAndLeavesFilesWhole) {
  TempDir dir;
  const std::string from = dir.Write("from", "content");
  const std::string other = dir.Write("other", "kept");
  ASSERT_EQ(link(from.c_str(), (dir / "hard").c_str()), 0);
  ASSERT_EQ(symlink("from", (dir / "soft").c_str()), 0);
  EXPECT_EQ(Copy(from, other, 0), -1);
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);  // nobody waits at its other end
  for (const char* noFile : {"missing", ".", "fifo"}) EXPECT_EQ(Copy(dir / noFile, other), -1);
  for (const char* noTarget : {"from", "hard", "soft", "fifo", "no/such/directory"}) {
    EXPECT_EQ(Copy(from, dir / noTarget), -1) << noTarget;
  }
  EXPECT_EQ(dir.Read("from"), "content");
  EXPECT_EQ(dir.Read("other"), "kept");
  EXPECT_EQ(Copy(from, dir / "new", 0), 0);
  EXPECT_EQ(dir.Read("new"), "content");
}

TEST(VorFCopy, KeepsHoles) {
  TempDir dir;
  const std::string from = dir.Write("from", "start");
  ASSERT_EQ(truncate(from.c_str(), 3 << 20), 0);
  ASSERT_EQ(Copy(from, dir / "to"), 0);
  EXPECT_EQ(dir.Read("to"), dir.Read("from"));
  struct stat info;
  ASSERT_EQ(stat((dir / "to").c_str(), &info), 0);
  EXPECT_LT(info.st_blocks * 512, 1 << 20);
}

TEST(VorFCopy, OpensNoFileAsAStandardDescriptor) {
  TempDir dir;
  const std::string from = dir.Write("from", "content");
  EXPECT_EQ(InProcess([&] {
              for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(fd);
              const rlimit standardOnly = {STDERR_FILENO + 1, STDERR_FILENO + 1};
              setrlimit(RLIMIT_NOFILE, &standardOnly);
              return -Copy(from, dir / "to");
            }),
            1);
}
