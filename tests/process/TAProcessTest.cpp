#include "process/TAProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "base/VorListValVorString.h"
#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

int RunToEnd(TAProcess& process, const std::string& command) {
  int status = -1;
  EXPECT_EQ(process.Start(command, 0), 0);
  process.Wait(status);
  return status;
}

int StatusOf(const std::string& command) {
  TAProcess process;
  return RunToEnd(process, command);
}

// Blocks until the process ends, which is not collected.
void AwaitZombie(int pid) {
  EXPECT_EQ(waitid(P_PID, static_cast<id_t>(pid), nullptr, WEXITED | WNOWAIT), 0);
}

}  // namespace

TEST(TAProcess, SplitsWordsAndQuotedPhrases) {
  const char* const rows[][2] = {
      {"a  b", "<a><b>"},
      {"\"a\"", "<a>"},
      {"a\tb", "<a\tb>"},
      {"\"a   b c\" d", "<a b c><d>"},       // single blanks, whatever stood there
      {"a\"b c\"d", "<a\"b><c\"d>"},         // quotes count only at the ends of words
      {"a\" \"b", "<a\">"},                  // never closed
      {"x \"a b \"c d\" e", "<x><c d><e>"},  // opened again: the first opening is dropped
      {"\"a \"b\" c\"", "<b><a c>"},
      {"x \"", "<x><>"},                             // a lone quote opens and closes
      {"*.c $HOME 'a b'", "<*.c><$HOME><'a><b'>"}};  // no shell reads it
  const TempDir dir;
  TAProcess process;
  process.SetOutput(VorString(dir / "out"));
  for (const auto& [words, arguments] : rows) {
    RunToEnd(process, std::string("printf <%s> ") + words);
    EXPECT_EQ(dir.Read("out"), arguments) << words;
  }
}

TEST(TAProcess, FoldsStatuses) {
  const std::pair<const char*, int> rows[] = {
      {"true", 0},    {"sh -c \"exit 255\"", 255},     {"sh -c \"kill -9 $$\"", 9},
      {"   ", 1},     {"no-such-program-anywhere", 1}, {"/", 1},
      {"\"true\"", 1}};  // the program is taken as it is
  for (const auto& [command, status] : rows) EXPECT_EQ(StatusOf(command), status) << command;
  TAProcess process;  // Exec has a bound of its own
  EXPECT_EQ(process.Exec("exit 1"), 256);
  EXPECT_EQ(process.Exec("exit 2"), 2);
}

TEST(TAProcess, LetsGoOfACollectedChild) {
  TAProcess process;
  int status = 7;
  EXPECT_EQ(RunToEnd(process, "sh -c \"exit 3\""), 3);
  EXPECT_TRUE(process.Check(status) == -1 && status == 0);
  EXPECT_TRUE(process.Kill() == 256 && process.KillWithSig(1) == 0);
  VorListValVorString pids;
  EXPECT_TRUE(process.GetProcessTree(pids) == 0 && pids.Size() == 1);

  ASSERT_EQ(process.Start("true", 0), 0);
  ASSERT_EQ(waitpid(process.ChildPid(), nullptr, 0), process.ChildPid());  // elsewhere
  EXPECT_EQ(process.Check(status), -1);
  setenv("whence_ro", "true", 1);
  EXPECT_EQ(process.KillTree(), 256);  // no shell was asked to kill whoever has the number now
  unsetenv("whence_ro");
}

// Any of these, done to "0" or "-1", would hit this process or collect the other child.
TEST(TAProcess, WithoutAChildTouchesNobody) {
  TAProcess other;
  ASSERT_EQ(other.Start("sh -c \"exit 5\"", 0), 0);
  AwaitZombie(other.ChildPid());
  for (int pid : {0, -1, -other.ChildPid()}) {
    TAProcess none(pid);
    int status = 7;
    EXPECT_TRUE(none.Check(status) == -1 && status == 0 && none.Wait(status) == 0);
    EXPECT_TRUE(none.Kill() == 256 && none.KillTree() == 256);
    EXPECT_EQ(none.KillWithSig(1) + none.KillTreeWithSig(1), 0);
    VorListValVorString pids;
    EXPECT_EQ(none.GetProcessTree(pids), -1);
    EXPECT_STREQ(none.GetErrMsg(), "no error");
  }
  int status = 0;
  EXPECT_TRUE(other.Check(status) == other.ChildPid() && status == 5);
}

TEST(TAProcess, RedirectsAllThreeStreams) {
  TempDir dir;
  const std::string in = dir.Write("in", "read\n");
  // Whatever descriptors the parent has closed, the files get theirs.
  for (int closed = 0; closed < 8; ++closed) {
    const int status = InProcess([&] {
      for (int fd = 0; fd < 3; ++fd) {
        if ((closed >> fd & 1) != 0) close(fd);
      }
      close_range(3, ~0U, 0);  // what the tests were started with
      TAProcess process;
      process.SetInput(VorString(in));
      process.SetOutput(VorString(dir / "out"));
      return RunToEnd(process, "sh -c \"cat; echo error >&2; ls /proc/self/fd/3 && exit 9\"");
    });
    EXPECT_NE(status, 9) << "left open, closed " << closed;
    EXPECT_EQ(dir.Read("out").substr(0, 11), "read\nerror\n") << "closed " << closed;
  }
}

TEST(TAProcess, SearchesThePathAndRunsScripts) {
  TempDir dir;
  chmod(dir.Write("first/tool", "exit 4").c_str(), 0644);    // not allowed: the search goes on
  chmod(dir.Write("second/tool", "exit $1").c_str(), 0755);  // no interpreter named: the shell's
  const std::string path = dir / "none" + ":" + (dir / "first") + ":" + (dir / "second");
  EXPECT_EQ(InProcess([&] { return setenv("PATH", path.c_str(), 1), StatusOf("tool 5"); }), 5);
}

TEST(TAProcess, NeverRepeatsBufferedOutput) {
  TempDir dir;
  EXPECT_EQ(InProcess([&] {
              if (freopen((dir / "out").c_str(), "w", stdout) == nullptr) return 2;
              printf("written once");
              return StatusOf("no-such-program-anywhere");
            }),
            1);
  EXPECT_EQ(dir.Read("out"), "written once");
}

TEST(TAProcess, GivesTheChildCleanSignals) {
  TempDir dir;
  ASSERT_EQ(InProcess([&] {
              signal(SIGPIPE, SIG_IGN);
              signal(SIGHUP, SIG_IGN);
              signal(SIGUSR1, [](int) {});
              sigset_t mask, after;
              sigemptyset(&mask);
              sigaddset(&mask, SIGUSR2);
              sigprocmask(SIG_SETMASK, &mask, nullptr);
              TAProcess process;
              process.SetOutput(VorString(dir / "out"));
              const int status = RunToEnd(process, "cat /proc/self/status");
              sigprocmask(SIG_SETMASK, nullptr, &after);
              return status + (sigismember(&after, SIGUSR1) != 0 ? 1 : 0);
            }),
            0);
  const std::string out = dir.Read("out");
  const auto signals = [&](const std::string& name) {
    return std::stoull(out.substr(out.find(name) + name.size()), nullptr, 16);
  };
  EXPECT_EQ(signals("SigBlk:"), 1u << (SIGUSR2 - 1));
  EXPECT_EQ(signals("SigCgt:"), 0u);
  EXPECT_NE(signals("SigIgn:") & 1u << (SIGHUP - 1), 0u);
  EXPECT_EQ(signals("SigIgn:") & 1u << (SIGPIPE - 1), 0u);
}

TEST(TAProcess, StartsChildrenFromSeveralThreads) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([] {
      for (int code = 1; code <= 25; ++code) {
        EXPECT_EQ(StatusOf("sh -c \"exit " + std::to_string(code) + "\""), code);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(TAProcess, ReportsThatThereIsNoChild) {
  EXPECT_EQ(InProcess([] {
              const rlimit none = {0, 0};
              if (setrlimit(RLIMIT_NPROC, &none) != 0) return 1;
              if (getuid() == 0 && setuid(65534) != 0) return 2;  // root has no limit
              TAProcess process;
              if (process.Start("true", 0) != 1 || process.ChildPid() != 0) return 3;
              return process.GetErrMsg() == "Unable to fork process" ? 0 : 4;
            }),
            0);
}

// Seven shells in three generations, which do nothing until they are killed.  A named pipe is their
// output: its end is reached when the last of them has gone.
TEST(TAProcess, ListsAndKillsWholeTrees) {
  for (const int signal : {15, 9}) {
    const TempDir dir;
    const std::string script = dir.Write("family.sh",
                                         "if [ $1 = 0 ]; then echo up\n"
                                         "else sh $0 $(($1 - 1)) & sh $0 $(($1 - 1)) & fi\n"
                                         "read x <> ${0%/*}/never\n");
    for (const char* pipe : {"never", "pipe"}) mkfifo((dir / pipe).c_str(), 0600);
    TAProcess head;
    head.SetOutput(VorString(dir / "pipe"));
    head.Start(VorString("sh " + script + " 2"), 0);
    std::ifstream pipe(dir / "pipe");
    std::string line;
    for (int youngest = 0; youngest < 4 && std::getline(pipe, line);) ++youngest;
    VorListValVorString pids;
    EXPECT_EQ(head.GetProcessTree(pids), 0);
    EXPECT_TRUE(pids.Size() == 7 && atoi(pids[1]) == head.ChildPid());
    EXPECT_EQ(signal == 9 ? head.KillTree() : head.KillTreeWithSig(0), 0);
    while (std::getline(pipe, line)) continue;
    int status = -1;
    head.Wait(status);
    EXPECT_EQ(status, signal);
  }
}

TEST(TAProcess, ChecksWithoutBlockingAndKillsTheChildAlone) {
  for (int hard = 0; hard < 2; ++hard) {
    TAProcess process;
    process.SetInput("/no/such/folder/in");  // files that cannot be opened change nothing
    process.SetOutput("/no/such/folder/out");
    ASSERT_EQ(process.Start("sleep 100", 0), 0);
    int status = 7;
    EXPECT_TRUE(process.Check(status) == 0 && status == 0);
    EXPECT_EQ(process.KillWithSig(hard), 0);
    AwaitZombie(process.ChildPid());
    EXPECT_EQ(process.Check(status), process.ChildPid());
    EXPECT_EQ(status, hard != 0 ? 9 : 15);
  }
}

TEST(TAProcess, ZombiCleanLeavesEndsToTheSystem) {
  EXPECT_EQ(InProcess([] {
              TAProcess ended, later;
              int status = 7;
              if (ended.Start("sh -c \"exit 3\"", 0) != 0) return 1;
              AwaitZombie(ended.ChildPid());
              TAProcess::ZombiClean();
              if (ended.Check(status) != -1 || status != 0) return 2;
              return RunToEnd(later, "sh -c \"exit 3\"") == 0 && later.Exec("exit 3") == -1 ? 0 : 3;
            }),
            0);
}
