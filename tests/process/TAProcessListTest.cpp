#include "process/TAProcessList.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "base/VorListValVorString.h"
#include "process/TAProcess.h"
#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

// A command that runs until the gate is opened.
class Gate {
 public:
  Gate() { mkfifo((_dir / "gate").c_str(), 0600); }
  VorString Command() const { return "sh -c \"read x < " + (_dir / "gate") + "\""; }
  void Open() const { _dir.Write("gate", "\n"); }

 private:
  TempDir _dir;
};

void RunAll(TAProcessList& list) {
  while (list.NDone() < list.Size()) {
    list.Check();
    EXPECT_LE(list.NRunning(), 10);
    list.WaitForChange(-1);
  }
}

}  // namespace

TEST(TAProcessList, StartsTheLastCommandFirst) {
  const Gate gate;
  TAProcessList list(2);
  EXPECT_EQ(list.Start(gate.Command(), 0), 1);
  EXPECT_EQ(list.Start("sh -c \"exit 4\"", 0), 2);
  EXPECT_EQ(list.Start("sh -c \"exit 5\"", 0), 3);
  EXPECT_EQ(list.WaitForChange(-1), 1);  // it may start
  EXPECT_EQ(list.Check(), 1);
  EXPECT_EQ(list.GetStatus(1), TAProcessList::Waiting);
  EXPECT_EQ(list.NRunning(), 2);
  EXPECT_STREQ(list.GetEnd(3).Describe(), "not ended");
  while (list.NDone() < 2) {
    EXPECT_EQ(list.WaitForChange(-1), 1);
    EXPECT_EQ(list.Check(), 1);
  }
  EXPECT_EQ(list.GetStatus(1), TAProcessList::Running);
  EXPECT_EQ(list.GetReturnCode(2), 4);
  EXPECT_STREQ(list.GetEnd(3).Describe(), "exit 5");
  EXPECT_EQ(list.Check(), 0);
  EXPECT_EQ(list.WaitForChange(20), 0);
  gate.Open();
  RunAll(list);
  EXPECT_EQ(list.Check(), 0);
  EXPECT_EQ(list.WaitForChange(-1), 0);
}

TEST(TAProcessList, RunsFiveHundredCommands) {
  TempDir dir;
  TAProcessList list(10);
  for (int number = 1; number <= 500; ++number) {
    const std::string code = std::to_string(number % 200);
    list.Start(VorString("sh -c \"echo; exit " + code + "\""), 60, VorString(dir / code));
  }
  RunAll(list);
  for (int number = 1; number <= 500; ++number) {
    EXPECT_EQ(list.GetReturnCode(number), number % 200);
  }
  EXPECT_EQ(dir.Read("199"), "\n");
}

TEST(TAProcessList, KillsTheTreeOfACommandThatTimesOut) {
  ASSERT_EQ(InProcess([] {
              TAProcessList list;
              list.Start("sh -c \"sleep 100; true\"", 1);
              const time_t start = time(nullptr);
              RunAll(list);
              if (time(nullptr) < start + 2) return 1;  // strictly later than the limit
              if (list.GetReturnCode(1) != 99 || list.GetStatus(1) != 2) return 2;
              if (list.GetEnd(1).Describe() != "timed out after 1 s") return 6;
              if (waitid(P_ALL, 0, nullptr, WEXITED | WNOWAIT) != 0) return 3;
              if (list.Check() != 0 || list.GetReturnCode(1) != 99) return 4;
              return waitpid(-1, nullptr, WNOHANG) == -1 ? 0 : 5;  // it has been reaped
            }),
            0);
}

TEST(TAProcessList, HoldsAtMostAQuarterOfTheDescriptors) {
  EXPECT_EQ(InProcess([] {
              rlimit few = {40, 40};
              setrlimit(RLIMIT_NOFILE, &few);
              TAProcessList lists[2];
              for (int number = 0; number < 20; ++number) lists[number % 2].Start("sleep 100", 0);
              for (TAProcessList& list : lists) list.Check();
              for (TAProcessList& list : lists) list.WaitForChange(0);
              const int watches = system("exit $(ls -l /proc/$PPID/fd | grep -c pidfd)");
              int self = getpid();
              VorListValVorString pids;
              TAProcess(self).GetProcessTree(pids);
              few.rlim_cur = 3;  // below what is held: poll fails
              setrlimit(RLIMIT_NOFILE, &few);
              for (int child = 2; child <= pids.Size(); ++child) kill(atoi(pids[child]), SIGKILL);
              for (TAProcessList& list : lists) RunAll(list);
              return WEXITSTATUS(watches);
            }),
            10);
}
