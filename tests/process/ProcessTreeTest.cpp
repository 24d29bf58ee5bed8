#include "process/ProcessTree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <string>

#include "base/VorListValVorString.h"
#include "process/ProcessTable.h"
#include "support/TempDir.h"

namespace vor {

bool operator==(const ProcessRow& left, const ProcessRow& right) {
  return left.pid == right.pid && left.parent == right.parent;
}

}  // namespace vor

namespace {

using vor::ProcessTable;

// The search as it is promised: from the last row to the first, anew after each find.
std::vector<int> FindTreeNaively(int root, ProcessTable table) {
  std::vector<int> tree{root};
  for (std::size_t row = table.size(); row-- > 0;) {
    if (std::find(tree.begin(), tree.end(), table[row].parent) == tree.end()) continue;
    tree.push_back(table[row].pid);
    table.erase(table.begin() + static_cast<std::ptrdiff_t>(row));
    row = table.size();
  }
  return tree;
}

std::vector<int> PidsOf(const ProcessTable& tree) {
  std::vector<int> pids;
  for (const vor::ProcessRow& row : tree) pids.push_back(row.pid);
  return pids;
}

}  // namespace

// Small identifiers make repeated rows, cycles and parents after their children likely.
TEST(ProcessTree, FindsTheSameAsRepeatedScans) {
  std::mt19937 random(20260101);
  for (int round = 0; round < 3000; ++round) {
    ProcessTable table(random() % 40);
    const int range = 1 + static_cast<int>(random() % 60);
    const auto any = [&] { return 1 + static_cast<int>(random() % unsigned(range)); };
    for (vor::ProcessRow& row : table) row = {any(), any()};
    const int root = any();
    ASSERT_EQ(PidsOf(vor::FindTree(root, table)), FindTreeNaively(root, table))
        << "round " << round;
  }
}

TEST(ProcessTree, ListsFromTheEntriesItIsGiven) {
  // Those of "13" alone, each once, and not 9, which stands before its parent.
  const ProcessTable table = {{9, 14}, {10, 7}, {11, 10}, {12, 99}, {14, 13}, {13, 14}, {14, 13}};
  VorListValVorString pids;
  for (const char* entry : {"007", "10 ", "+99", "", "13"}) pids.Append(entry);
  vor::AppendChildrenInOnePass(table, pids);
  ASSERT_EQ(pids.Size(), 6);
  EXPECT_STREQ(pids[6], "14");
}

TEST(ProcessTree, KillsTheLastFoundFirst) {
  const ProcessTable tree = {{100, 1}, {101, 100}, {102, 101}};
  EXPECT_EQ(vor::KillCommands(tree, 1000), std::vector<std::string>{"kill -9 102 101 100"});
  setenv("whence_ro", "under", 1);
  setenv("KVR_UXT_NULL", "/dev/null", 1);
  EXPECT_EQ(vor::KillCommands(tree, 45),
            (std::vector<std::string>{"under kill -9 102 101 > $KVR_UXT_NULL 2>&1",
                                      "under kill -9 100 > $KVR_UXT_NULL 2>&1"}));
  EXPECT_EQ(vor::KillCommands(tree, 1).size(), 3u);  // no room at all: one each
  unsetenv("whence_ro");
  unsetenv("KVR_UXT_NULL");
}

TEST(ProcessTable, ReadsEitherSource) {
  TempDir dir;
  dir.Write("12/stat", "12 (a b) S (c)) R 7 12 12 0 -1");
  dir.Write("9/stat", "9 () S 1 9");
  dir.Write("10/stat", "");
  dir.Write("11/stat", "11 (cut off");
  dir.Write("13/status", "no stat");
  dir.Write("x14/stat", "14 (x) S 1 2");
  ProcessTable table;
  ASSERT_TRUE(vor::ReadProcDirectory(dir.Path().c_str(), table));
  EXPECT_EQ(table, (ProcessTable{{9, 1}, {12, 7}}));
  EXPECT_FALSE(vor::ReadProcDirectory((dir / "12").c_str(), table));
  EXPECT_FALSE(vor::ReadProcDirectory((dir / "none").c_str(), table));

  const std::string file =
      dir.Write("ps", "UID PID PPID C CMD\n\nroot 2\nroot 3 1 0 x " + std::string(5000, 'y') +
                          " root 4 1\nroot\t5\xc3\xa9 3 0 y\nroot 6x 1\n");
  ASSERT_TRUE(vor::ReadProcessListing(("cat " + file).c_str(), table));
  EXPECT_EQ(table, (ProcessTable{{3, 1}, {5, 3}}));
}

// The first thread stops or ends before the others.
TEST(ProcessTable, SeesAllThreads) {
  const struct {
    const char* threads;
    std::string first, second;
    bool isMotionless;
  } rows[] = {{"1", "T", "R", true},  {"1", "S", "T", false}, {"2", "T", "R", false},
              {"2", "Z", "R", false}, {"2", "Z", "T", true},  {"2", "T", "T", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.threads + row.first + row.second);
    TempDir dir;
    const std::string rest =
        std::string(" 1 7 7 0 -1 0 0 0 0 0 0 0 0 0 20 0 ") + row.threads + " 0 5";
    dir.Write("7/stat", "7 (x) " + row.first + rest);
    dir.Write("7/task/7/stat", "7 (x) " + row.first + rest);
    dir.Write("7/task/8/stat", "8 (x) " + row.second + rest);
    ProcessTable table;
    ASSERT_TRUE(vor::ReadProcDirectory(dir.Path().c_str(), table));
    EXPECT_EQ(vor::IsMotionless(table.at(0), dir.Path().c_str()), row.isMotionless);
    EXPECT_FALSE(vor::HasEnded(table.at(0)));
  }
}
