#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
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

struct DesertedScript {
  explicit DesertedScript(const TempDir& dir) : command(dir.Write("deserted", kDeserted)) {
    chmod(command.c_str(), 0755);
  }
  const std::string command;
};

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
    for (const auto& row : rows) {
      for (const bool ends : {true, false}) {
        SCOPED_TRACE(static_cast<int>(row.containment));
        const TempDir dir;
        const DesertedScript script(dir);
        TAProcess process;
        process.SetContainment(row.containment);
        process.SetLeavesNobody(true);
        process.SetOutput(VorString(dir / "out"));
        process.Start(script.command + (ends ? " end" : ""), 0);
        int status = 0;
        ASSERT_TRUE(
            Eventually([&] { return dir.Read("out").find("complete") != std::string::npos; }));
        if (!ends) process.KillTree();
        process.Wait(status);
        EXPECT_EQ(status, ends ? 3 : 9);
        EXPECT_EQ(process.GetEnd().leftBehind,
                  ends ? 2 - row.orphanLives - row.otherSessionLives : 0);
        int orphan = 0, otherSession = 0;
        std::ifstream(dir / "out") >> orphan >> otherSession;
        EXPECT_EQ(Lives(orphan), row.orphanLives);
        EXPECT_EQ(Lives(otherSession), row.otherSessionLives);
        if (row.orphanLives) kill(orphan, SIGKILL);
        if (row.otherSessionLives) kill(otherSession, SIGKILL);
      }
    }
  });
}

// Once the command was reaped elsewhere, its number may be that of another group.
TEST(Containment, NeverSignalsAGroupThatMayBeAnother) {
  const TempDir dir;
  const DesertedScript script(dir);
  TAProcess process;
  process.SetContainment(TAContainment::Group);
  process.SetOutput(VorString(dir / "out"));
  process.Start(script.command + " end", 0);
  ASSERT_EQ(waitpid(process.ChildPid(), nullptr, 0), process.ChildPid());
  EXPECT_EQ(process.KillTree(), 256);
  int member = 0, otherSession = 0;
  std::ifstream(dir / "out") >> member >> otherSession;
  EXPECT_TRUE(Lives(member));
  kill(member, SIGKILL);
  kill(otherSession, SIGKILL);
}

// But what is left in it is found if the end was noticed here.
TEST(Containment, KillsAGroupWithoutItsLeader) {
  const TempDir dir;
  const DesertedScript script(dir);
  TAProcess process;
  process.SetContainment(TAContainment::Group);
  process.SetOutput(VorString(dir / "out"));
  process.Start(script.command + " end", 0);
  int status = 0;
  process.Wait(status);
  EXPECT_EQ(process.KillTree(), 0);
  int member = 0, otherSession = 0;
  std::ifstream(dir / "out") >> member >> otherSession;
  EXPECT_FALSE(Lives(member));
  kill(otherSession, SIGKILL);
}
