#include "process/TAProcessList.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "base/VorListValVorString.h"
#include "process/TAProcess.h"
#include "process/TAProcessOptions.h"
#include "support/InProcess.h"
#include "support/TempDir.h"
#include "support/TreeOutput.h"

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

// Until \a count commands are done.
void RunUntilDone(TAProcessList& list, int count) {
  while (list.NDone() < count) {
    list.Check();
    if (list.NDone() < count) list.WaitForChange(-1);
  }
}

VorListValVorString Shell(const VorString& script) {
  return {"sh", "-c", script};
}

constexpr int kLong = 60'000;  // milliseconds

constexpr char kTraced[] = "VOR_TEST_TRACED";

// If that variable is set, this program asks to be traced while its parent waits.
int ActAsTraced() {
  if (getenv(kTraced) == nullptr) return 0;
  usleep(200'000);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  return raise(SIGUSR1);
}
[[maybe_unused]] const int traced = ActAsTraced();

TAProcessList* signalled = nullptr;  // the list that the handler of a test wakes, if any

void HandleSignal(int) {
  if (signalled != nullptr) signalled->Wake();
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

TEST(TAProcessList, KillsTheTreeOfACommandThatTimesOut) {
  ASSERT_EQ(InProcess([] {
              TAProcessList list;
              list.Start("sh -c \"sleep 100; true\"", 1);
              const time_t start = time(nullptr);
              RunAll(list);
              if (time(nullptr) < start + 2) return 1;  // strictly later than the limit
              if (list.GetReturnCode(1) != 99 || list.GetStatus(1) != 2) return 2;
              if (list.GetEnd(1).Describe() != "timed out after 1 s") return 6;
              if (waitpid(-1, nullptr, WNOHANG) != -1) return 3;  // it was reaped
              if (list.GetEnd(1).peakMemoryKiB == 0) return 5;
              return list.Check() == 0 && list.GetReturnCode(1) == 99 ? 0 : 4;
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

TEST(TAProcessList, TellsHowCommandsEnded) {
  const struct {
    const char* script;
    int code;
    const char* end;
  } rows[] = {{"exit 0", 0, "exit 0"},
              {"exit 9", 9, "exit 9"},
              {"exit 99", 99, "exit 99"},
              {"kill -9 $$", 9, "killed by SIGKILL"},
              {"ulimit -c 0; kill -11 $$", 11, "killed by SIGSEGV"},
              {"kill -15 $$", 15, "killed by SIGTERM"}};
  constexpr char kMissing[] = "could not start: No such file or directory";
  TAProcessList list;
  for (const auto& row : rows) list.Start(Shell(row.script), TAProcessOptions(), kLong);
  const int timedOut = list.Start("sleep 1000", TAProcessOptions(), 50);
  const int missing = list.Start("no-such-program", TAProcessOptions(), kLong);
  const int cancelled = list.Start("sleep 1000", TAProcessOptions(), 0);
  const int slower = list.Start("sleep 1000", 1);
  EXPECT_EQ(list.GetPid(cancelled), 0);
  RunUntilDone(list, 8);  // a limit in milliseconds ends before a second does
  EXPECT_EQ(list.GetStatus(slower), TAProcessList::Running);
  EXPECT_GT(list.GetPid(cancelled), 0);
  list.Cancel(cancelled);
  list.CancelAll();
  for (int position = 1; position <= 6; ++position) {
    const auto& [script, code, end] = rows[position - 1];
    EXPECT_EQ(list.GetReturnCode(position), code) << script;
    EXPECT_STREQ(list.GetEnd(position).Describe(), end) << script;
  }
  EXPECT_EQ(list.GetReturnCode(timedOut), 99);
  EXPECT_EQ(list.GetEnd(timedOut).kind, TAProcessEnd::TimedOut);
  EXPECT_GE(list.GetEnd(timedOut).seconds, 0.05);
  EXPECT_EQ(list.GetReturnCode(missing), 1);
  EXPECT_STREQ(list.GetEnd(missing).Describe(), kMissing);
  EXPECT_EQ(list.GetReturnCode(cancelled), 98);
  EXPECT_STREQ(list.GetEnd(cancelled).Describe(), "cancelled");
  EXPECT_GT(list.GetEnd(cancelled).peakMemoryKiB, 0);
  EXPECT_EQ(list.NDone(), list.Size());
}

TEST(TAProcessList, KnowsWhenAnEndWasCollectedElsewhere) {
  for (const bool bySystem : {true, false}) {
    EXPECT_EQ(InProcess([&] {
                if (bySystem) signal(SIGCHLD, SIG_IGN);
                TAProcessList list;
                list.Start("true", TAProcessOptions(), 0);
                list.Check();
                if (!bySystem) waitpid(-1, nullptr, 0);
                RunAll(list);
                return static_cast<int>(list.GetEnd(1).kind);
              }),
              TAProcessEnd::Lost);
  }
}

TEST(TAProcessList, StartsInOrderAndCancelsWhatHasNotEnded) {
  TAProcessList list(1);
  list.SetOrder(TAProcessList::FirstAddedFirst);
  list.Start(Shell("exit 5"), TAProcessOptions(), kLong);
  for (int number = 2; number <= 4; ++number) list.Start("sleep 1000", TAProcessOptions(), kLong);
  list.Check();
  waitid(P_PID, static_cast<id_t>(list.GetPid(1)), nullptr, WEXITED | WNOWAIT);
  list.Cancel(1);  // too late
  list.Cancel(3);
  EXPECT_EQ(list.NDone(), 2);
  EXPECT_EQ(list.Check(), 1);
  EXPECT_EQ(list.GetStatus(2), TAProcessList::Running);
  list.CancelAll();
  const char* const ends[] = {"exit 5", "cancelled", "cancelled", "cancelled"};
  for (int position = 1; position <= 4; ++position) {
    EXPECT_STREQ(list.GetEnd(position).Describe(), ends[position - 1]) << position;
    EXPECT_EQ(list.GetPid(position) > 0, position <= 2) << position;
  }
  EXPECT_EQ(list.WaitForChange(-1), 1);
  EXPECT_EQ(list.Check(), 1);
  EXPECT_EQ(list.Check(), 0);
}

TEST(TAProcessList, GivesCommandsTimeToEnd) {
  const struct {
    const char* script;
    int graceMs;
    int lines;  // that it writes in its grace time
  } rows[] = {
      {"trap 'echo; exit' TERM; echo; while :; do sleep 0.01; done", kLong, 1},
      {"trap 'echo; exit' TERM; echo; kill -STOP $$", kLong, 1},
      {"trap '' TERM; echo; sleep 1000", 50, 0},
      {"(trap '' TERM; echo; sleep 1000) & wait", 50, 0},  // its root ends
      {"(trap '' TERM; echo; sh -c 'sleep 1000'; :) & sleep 1000", 50, 0},
      {"(trap 'sleep 0.1; echo; exit' TERM; echo; while :; do sleep 0.01; done) & wait", kLong, 1}};
  for (const auto containment :
       {TAContainment::Tree, TAContainment::Group, TAContainment::Everything}) {
    for (const auto& [script, graceMs, lines] : rows) {
      SCOPED_TRACE(script);
      const TreeOutput output;
      TAProcessList list;
      list.SetContainment(containment);
      list.SetLeavesNobody(containment == TAContainment::Everything);
      list.SetGrace(graceMs);
      list.Start(Shell(script), TAProcessOptions().SetOutput(output.Path()), 0);
      list.Check();
      output.ReadLines(1);
      if (strstr(script, "STOP") != nullptr) {
        waitid(P_PID, static_cast<id_t>(list.GetPid(1)), nullptr, WSTOPPED | WNOWAIT);
      }
      list.Cancel(1);
      EXPECT_STREQ(list.GetEnd(1).Describe(), "not ended");
      RunAll(list);
      EXPECT_EQ(list.GetReturnCode(1), 98);
      EXPECT_STREQ(list.GetEnd(1).Describe(), "cancelled");
      EXPECT_LT(list.GetEnd(1).seconds, kLong / 1000.0);
      output.ReadLines(lines);
      EXPECT_TRUE(output.Ends());
    }
  }
}

TEST(TAProcessList, KillsDuringTheGraceTimeOnDemand) {
  const TreeOutput output;
  TAProcessList list;
  list.SetGrace(kLong);
  list.Start("sleep 1000", TAProcessOptions(), 20);  // ends on SIGTERM
  list.Start(Shell("trap '' TERM; echo; sleep 1000"), TAProcessOptions().SetOutput(output.Path()),
             0);
  list.Check();
  output.ReadLines(1);
  list.Cancel(2);
  list.Cancel(2);
  RunUntilDone(list, 1);
  EXPECT_EQ(list.GetEnd(1).kind, TAProcessEnd::TimedOut);
  EXPECT_EQ(list.GetReturnCode(1), 99);
  list.CancelAll();
  EXPECT_EQ(list.NRunning(), 1);
  list.SetGrace(0);
  list.CancelAll();
  EXPECT_STREQ(list.GetEnd(2).Describe(), "cancelled");
  EXPECT_TRUE(output.Ends());
}

TEST(TAProcessList, EndsWaitsByWakingAndBySignals) {
  static constexpr int rounds[] = {2000, 20};  // with descriptors; without, so at intervals
  for (const int count : rounds) {
    EXPECT_EQ(InProcess([count] {
                TAProcessList list;
                list.Start("sleep 1000", 0);
                list.Check();
                std::atomic<int> asked = -1;
                std::thread waker([&] {
                  for (int round = 0; round <= count; ++round) {
                    list.Wake();
                    while (asked < round) std::this_thread::yield();
                  }
                });
                int result = list.WaitForChange(-1);
                rlimit limit;
                getrlimit(RLIMIT_NOFILE, &limit);
                const rlimit none = {3, limit.rlim_max};
                if (count < rounds[0]) setrlimit(RLIMIT_NOFILE, &none);
                signal(SIGUSR1, HandleSignal);
                signalled = &list;
                raise(SIGUSR1);
                result += list.WaitForChange(-1);
                signalled = nullptr;
                for (int round = 0; round < count; ++round) {
                  asked = round;
                  result += list.WaitForChange(-1);
                }
                const itimerval soonAndAgain = {{0, 10'000}, {0, 10'000}};
                signal(SIGALRM, HandleSignal);
                setitimer(ITIMER_REAL, &soonAndAgain, nullptr);
                result += list.WaitForChange(-1);
                kill(list.GetPid(1), SIGKILL);
                setrlimit(RLIMIT_NOFILE, &limit);
                asked = count;
                waker.join();
                return result > 0 ? 1 : 0;
              }),
              0);
  }
}

TEST(TAProcessList, StartsOnlyOneCommandAtHighLoad) {
  constexpr double kAlmostNone = 0.0001;
  double load = 0;
  if (getloadavg(&load, 1) < 1 || load < kAlmostNone) GTEST_SKIP() << "no load";
  TAProcessList list;
  list.SetMaxLoad(kAlmostNone);
  for (int number = 0; number < 3; ++number) list.Start("sleep 1000", TAProcessOptions(), kLong);
  EXPECT_EQ(list.WaitForChange(-1), 1);
  list.Check();
  EXPECT_EQ(list.NRunning(), 1);
  EXPECT_EQ(list.WaitForChange(10), 0);
  list.Cancel(3);
  EXPECT_EQ(list.WaitForChange(-1), 1);  // one may always run
  list.SetMaxLoad(0);
  list.Check();
  EXPECT_EQ(list.NRunning(), 2);
  list.CancelAll();
}

TEST(TAProcessList, WaitEndsIfACommandAsksToBeTraced) {
  TAProcessList list;
  list.Start("/proc/self/exe", TAProcessOptions().SetVariable(kTraced, ""), kLong);
  RunAll(list);
  EXPECT_EQ(list.GetEnd(1).Describe(), "killed by SIGUSR1");
}
