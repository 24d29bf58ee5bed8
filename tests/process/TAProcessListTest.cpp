#include "process/TAProcessList.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <string>

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
  EXPECT_EQ(list.Check(), 1);
  EXPECT_TRUE(list.GetStatus(1) == 0 && list.GetStatus(2) == 1 && list.GetStatus(3) == 1);
  while (list.NDone() < 2) EXPECT_TRUE(list.WaitForChange(-1) == 1 && list.Check() == 1);
  EXPECT_TRUE(list.GetStatus(1) == 1 && list.NRunning() == 1);
  EXPECT_TRUE(list.GetReturnCode(2) == 4 && list.GetReturnCode(3) == 5);
  EXPECT_EQ(list.Check(), 0);
  EXPECT_EQ(list.WaitForChange(20), 0);
  gate.Open();
  RunAll(list);
}

TEST(TAProcessList, RunsFiveHundredCommands) {
  TempDir dir;
  TAProcessList list;
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

TEST(TAProcessList, WithNothingToDoReturnsAtOnce) {
  TAProcessList list;
  EXPECT_TRUE(list.Check() == 0 && list.WaitForChange(-1) == 0);
  list.Start("true", 0);
  EXPECT_EQ(list.WaitForChange(-1), 1);  // it may start
  TAProcessList none(0);
  none.Start("true", 0);
  EXPECT_TRUE(none.Check() == 0 && none.WaitForChange(-1) == 0 && none.NWaiting() == 1);
}

TEST(TAProcessList, KillsATreeWhoseTimeIsOver) {
  ASSERT_EQ(InProcess([] {
              TAProcessList list;
              list.Start("sh -c \"sleep 100; true\"", 1);
              const time_t start = time(nullptr);
              RunAll(list);
              if (time(nullptr) < start + 2) return 1;  // strictly later than the limit
              if (list.GetReturnCode(1) != 99 || list.GetStatus(1) != 2) return 2;
              if (waitid(P_ALL, 0, nullptr, WEXITED | WNOWAIT) != 0) return 3;
              if (list.Check() != 0 || list.GetReturnCode(1) != 99) return 4;
              return waitpid(-1, nullptr, WNOHANG) == -1 ? 0 : 5;  // it has been collected
            }),
            0);
}

TEST(TAProcessList, EndsWhatIsCollectedElsewhere) {
  TAProcessList list;
  list.Start("sh -c \"exit 3\"", 0);
  list.Check();
  waitpid(-1, nullptr, 0);
  EXPECT_TRUE(list.WaitForChange(-1) == 1 && list.Check() == 1);
  EXPECT_TRUE(list.GetStatus(1) == 2 && list.GetReturnCode(1) == 0);
}

TEST(TAProcessList, WaitsThroughSignals) {
  EXPECT_EQ(InProcess([] {
              struct sigaction restarting = {};  // not poll, but the opening of the gate
              restarting.sa_handler = [](int) {};
              restarting.sa_flags = SA_RESTART;
              sigaction(SIGALRM, &restarting, nullptr);
              const itimerval often = {{0, 5000}, {0, 5000}};
              setitimer(ITIMER_REAL, &often, nullptr);
              const Gate gate;
              TAProcessList list;
              list.Start(gate.Command(), 0);
              list.Check();
              if (list.WaitForChange(100) != 0) return 1;
              gate.Open();
              if (list.WaitForChange(-1) != 1 || list.Check() != 1) return 2;
              return list.NDone() == 1 ? 0 : 3;
            }),
            0);
}

TEST(TAProcessList, WaitsWhateverDescriptorsAreLeft) {
  EXPECT_EQ(InProcess([] {
              const rlimit many = {4096, 4096};
              setrlimit(RLIMIT_NOFILE, &many);
              const int high = fcntl(0, F_DUPFD_CLOEXEC, 1100);
              for (int fd = 3; fd < high; ++fd) dup2(0, fd), fcntl(fd, F_SETFD, FD_CLOEXEC);
              TAProcessList list;
              list.Start("sleep 0.05", 0);
              list.Check();
              if (list.WaitForChange(-1) != 1 || list.Check() != 1) return 1;
              // Fewer than are held by then: poll fails.
              for (int i = 0; i < 4; ++i) list.Start("sleep 0.2", 0);
              list.Check();
              list.WaitForChange(0);
              const rlimit few = {3, 3};
              setrlimit(RLIMIT_NOFILE, &few);
              if (list.WaitForChange(-1) != 1 || list.Check() != 1) return 2;
              return list.NDone() >= 2 ? 0 : 3;
            }),
            0);
}

TEST(TAProcessList, HidesItsDescriptorsFromChildren) {
  const TempDir dir;
  const Gate gate;
  TAProcessList list;
  list.Start(gate.Command(), 0);
  list.Check();
  list.WaitForChange(0);
  list.Start("ls -l /proc/self/fd", 0, VorString(dir / "open"));
  list.Check();
  gate.Open();
  RunAll(list);
  EXPECT_NE(dir.Read("open").find("1 -> "), std::string::npos);
  EXPECT_EQ(dir.Read("open").find("pidfd"), std::string::npos);
}
