#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "process/TAProcess.h"
#include "process/TAProcessList.h"
#include "support/Eventually.h"
#include "support/InProcess.h"
#include "support/TempDir.h"
#include "support/TreeOutput.h"

namespace {

constexpr int kRounds = 5;  // for more, --gtest_repeat
constexpr uid_t kNobody = 65534;
constexpr char kSelf[] = "/proc/self/exe";
constexpr char kTool[] = "VOR_TEST_TOOL";  // see ActAsTool

// Each process announces itself by a line and would go on for minutes; most lose their parents.
// The arguments: the pipe for the output; then, in further runs, what to do.
constexpr char kTorture[] = R"(#!/bin/sh
if [ "$2" ]; then exec > "$1"; echo; exec $2; fi
grep ^0:: /proc/self/cgroup > "$1.group"
exec > "$1"
live() { echo; exec sleep 300; }
bomb() { [ $1 -eq 0 ] || { bomb $(($1 - 1)) & bomb $(($1 - 1)) & }; live; }
(while :; do (live); done) &
(trap '' TERM; while :; do echo; sleep 300; done) &
( (live) & )
(bomb 4 &)
(setsid "$0" "$1" "sleep 300" &)
(env -i setsid /bin/sh "$0" "$1" "/bin/sleep 300" &)
(set -m; (live) & )
(sh -c 'echo; kill -STOP $$; sleep 300' &)
(sh -c 'sh -c "echo; exec sleep 300" & echo; kill -KILL $$' &)
(while :; do (:) & wait; done) &
while :; do "$0" "$1" "sleep 300"; done
)";
constexpr int kTortured = 40;  // lines, at least

// Starts two processes that lose their parent, one of them in a session of its own, and writes
// their numbers.  Then it ends with 3 if its argument is "end".
constexpr char kDeserted[] = R"(#!/bin/sh
echo $( (sh -c 'echo $$; exec sleep 300 > /dev/null' &) )
echo $( (setsid sh -c 'echo $$; exec sleep 300 > /dev/null' &) )
echo complete
[ "$1" = end ] && exit 3
exec sleep 300
)";

bool Lives(int pid) {
  std::string word;
  char state = 'X';
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  stat >> word >> word >> state;
  return state != 'X' && state != 'Z';
}

// If the variable kTool is set, this program is a tool that contains the command in it.  Its first
// thread ends before that, which hides the process from careless searches.
int ActAsTool() {
  const char* const variable = getenv(kTool);
  if (variable == nullptr) return 0;
  const std::string command = variable;
  unsetenv(kTool);
  static TAProcess process;
  process.SetContainment(TAContainment::Everything);
  std::thread([command] {
    while (Lives(getpid())) usleep(100);
    process.Start(command, 0);
    for (;;) pause();
  }).detach();
  return static_cast<int>(syscall(SYS_exit, 0));
}
[[maybe_unused]] const int tool = ActAsTool();

// Runs \a body with each means of Everything, in processes of their own.  A user who may make no
// control group has only one.
void WithEachMeans(const std::function<void(const std::string& means)>& body) {
  TAProcess process;
  process.SetContainment(TAContainment::Everything);
  const std::string best = process.ContainmentInUse();
  const auto run = [&](const std::string& means) {
    EXPECT_EQ(process.ContainmentInUse(), means);
    body(means);
    return testing::Test::HasFailure() ? 1 : 0;
  };
  EXPECT_EQ(InProcess([&] { return run(best); }), 0) << best;
  if (best != "cgroup" || geteuid() != 0) return;
  const auto runAsNobody = [&] {
    return setgid(kNobody) == 0 && setuid(kNobody) == 0 ? run("marks") : 1;
  };
  EXPECT_EQ(InProcess(runAsNobody), 0) << "without control groups";
}

// The directory of the control group that \a file, a line of /proc/PID/cgroup, names.
std::string GroupDirectory(const std::string& file) {
  std::string group, line;
  std::getline(std::ifstream(file), group);
  std::ifstream mounts("/proc/self/mounts");
  while (std::getline(mounts, line)) {
    if (line.find(" cgroup2 ") == std::string::npos) continue;
    const std::size_t begin = line.find(' ') + 1;
    return line.substr(begin, line.find(' ', begin) - begin) + group.substr(sizeof "0::" - 1);
  }
  return "";
}

// A run of kDeserted.
struct Deserted {
  Deserted(TAContainment containment, bool leavesNobody, bool ends) {
    const std::string script = dir.Write("deserted", kDeserted);
    chmod(script.c_str(), 0755);
    process.SetContainment(containment);
    process.SetLeavesNobody(leavesNobody);
    process.SetOutput(VorString(dir / "out"));
    EXPECT_EQ(process.Start(script + (ends ? " end" : ""), 0), 0);
    const auto isComplete = [&] { return dir.Read("out").find("complete") != std::string::npos; };
    EXPECT_TRUE(Eventually(isComplete));
    std::ifstream(dir / "out") >> orphan >> otherSession;
  }
  // Kills what a test has left to live.
  ~Deserted() {
    for (const int pid : {orphan, otherSession}) {
      if (Lives(pid)) kill(pid, SIGKILL);
    }
  }
  int Wait() {
    int status = 0;
    process.Wait(status);
    return status;
  }

  const TempDir dir;
  TAProcess process;
  int orphan = 0;
  int otherSession = 0;
};

void TortureOnce(const std::string& means, bool isNested, int lines) {
  const TempDir dir;
  const std::string script = dir.Write("torture", kTorture);
  chmod(script.c_str(), 0755);
  const TreeOutput output;
  const std::string command = script + " " + output.Path().View().data();
  if (isNested) setenv(kTool, command.c_str(), 1);
  {
    TAProcess process;
    process.SetContainment(TAContainment::Everything);
    ASSERT_EQ(process.Start(isNested ? kSelf : command, 0), 0);
    unsetenv(kTool);
    output.ReadLines(lines);
    EXPECT_EQ(process.KillTree(), 0);
    ASSERT_TRUE(output.Ends());
    int status = 0;
    process.Wait(status);
    EXPECT_EQ(status, SIGKILL);
    EXPECT_EQ(process.KillTree(), 256);
  }
  if (means != "cgroup") return;
  const std::string group = GroupDirectory(output.Path().View().data() + std::string(".group"));
  EXPECT_NE(group.find("vor-"), std::string::npos);
  EXPECT_NE(access(group.c_str(), F_OK), 0) << group;
}

}  // namespace

TEST(Containment, EverythingSurvivesNoTorture) {
  WithEachMeans([](const std::string& means) {
    for (int round = 0; round < kRounds; ++round) {
      SCOPED_TRACE(means + ", round " + std::to_string(round));
      TortureOnce(means, round == 0, 1 + kTortured * round / (kRounds - 1));
    }
  });
}

TEST(Containment, FindsWhatItPromises) {
  const struct {
    TAContainment containment;
    bool orphanLives, otherSessionLives;
  } rows[] = {{TAContainment::Tree, true, true},
              {TAContainment::Group, false, true},
              {TAContainment::Everything, false, false}};
  WithEachMeans([&](const std::string&) {
    for (const auto& [containment, orphanLives, otherSessionLives] : rows) {
      for (const bool ends : {true, false}) {
        SCOPED_TRACE(static_cast<int>(containment));
        Deserted run(containment, true, ends);
        if (!ends) run.process.KillTree();
        EXPECT_EQ(run.Wait(), ends ? 3 : SIGKILL);
        EXPECT_EQ(run.process.GetEnd().leftBehind, ends ? 2 - orphanLives - otherSessionLives : 0);
        EXPECT_EQ(Lives(run.orphan), orphanLives);
        EXPECT_EQ(Lives(run.otherSession), otherSessionLives);
      }
    }
  });
}

// A hard limit below the mark stands for a command in the command of a command.
TEST(Containment, FindsProcessesByTheVariableAlone) {
  const auto body = [] {
    const rlimit low = {1000, 1000};
    if (setrlimit(RLIMIT_LOCKS, &low) != 0) return 1;
    if (geteuid() == 0 && setuid(kNobody) != 0) return 2;
    Deserted run(TAContainment::Everything, true, true);
    run.Wait();
    return 10 + run.process.GetEnd().leftBehind;
  };
  EXPECT_EQ(InProcess(body), 12);
}

TEST(Containment, ListsOfManyThreadsLeaveNobody) {
  WithEachMeans([](const std::string&) {
    const auto run = [] {
      const TempDir dir;
      // A child of another thread may hold the script open for writing, so it is not executed.
      const std::string command = "sh " + dir.Write("deserted", kDeserted) + " end";
      TAProcessList list(2);
      list.SetContainment(TAContainment::Everything);
      list.SetLeavesNobody(true);
      for (int i = 0; i < 4; ++i) list.Start(command, 0, VorString(dir / "out"));
      while (list.NDone() < list.Size()) {
        list.Check();
        list.WaitForChange(-1);
      }
      for (int i = 1; i <= list.Size(); ++i) {
        EXPECT_EQ(list.GetEnd(i).leftBehind, 2);
        EXPECT_EQ(list.GetReturnCode(i), 3);
      }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back(run);
    for (std::thread& thread : threads) thread.join();
  });
}

// Once the command was reaped elsewhere, its number may be that of another group.
TEST(Containment, NeverSignalsAGroupThatMayBeAnother) {
  Deserted run(TAContainment::Group, false, true);
  ASSERT_EQ(waitpid(run.process.ChildPid(), nullptr, 0), run.process.ChildPid());
  EXPECT_EQ(run.process.KillTree(), 256);
  EXPECT_TRUE(Lives(run.orphan));
}

// But what is left in it is found if the end was noticed here.
TEST(Containment, KillsAGroupWithoutItsLeader) {
  Deserted run(TAContainment::Group, false, true);
  EXPECT_EQ(run.Wait(), 3);
  EXPECT_TRUE(Lives(run.orphan));
  EXPECT_EQ(run.process.KillTree(), 0);
  EXPECT_FALSE(Lives(run.orphan));
}

TEST(Containment, KillsWhatACommandLeftThatWasReapedElsewhere) {
  EXPECT_EQ(InProcess([] {
              signal(SIGCHLD, SIG_IGN);
              TAProcess process;
              process.SetContainment(TAContainment::Everything);
              process.SetLeavesNobody(true);
              process.Start("sh -c \"sleep 1000 & exit 3\"", 0);
              Eventually([&] { return kill(process.ChildPid(), 0) != 0; });
              process.KillWithSig(0);
              return process.GetEnd().leftBehind;
            }),
            1);
}
