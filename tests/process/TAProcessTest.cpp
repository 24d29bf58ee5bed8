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

int StatusOf(const char* command) {
  TAProcess process;
  int status = -1;
  EXPECT_EQ(process.Start(command, 0), 0);
  process.Wait(status);
  return status;
}

std::string OutputOf(const std::string& command) {
  TempDir dir;
  TAProcess process;
  int status = -1;
  process.SetOutput(VorString(dir / "out"));
  EXPECT_EQ(process.Start(command, 0), 0);
  process.Wait(status);
  return dir.Read("out");
}

// Seven shells in three generations, which do nothing until they are killed.  A named pipe is their
// output: its end is reached when the last of them has gone.
class Family {
 public:
  Family() {
    const std::string script = _dir.Write("family.sh",
                                          "if [ $1 = 0 ]; then echo up\n"
                                          "else sh $0 $(($1 - 1)) & sh $0 $(($1 - 1)) & fi\n"
                                          "read x <> ${0%/*}/never\n");
    mkfifo((_dir / "never").c_str(), 0600);
    mkfifo((_dir / "pipe").c_str(), 0600);
    head.SetOutput(VorString(_dir / "pipe"));
    head.Start(VorString("sh " + script + " 2"), 0);
    _pipe.open(_dir / "pipe");
    int youngest = 0;
    for (std::string line; youngest < 4 && std::getline(_pipe, line);) ++youngest;
  }

  // Blocks until all members have ended; the status of the head.
  int AwaitEnd() {
    for (std::string line; std::getline(_pipe, line);) continue;
    int status = -1;
    head.Wait(status);
    return status;
  }

  TAProcess head;

 private:
  TempDir _dir;
  std::ifstream _pipe;
};

}  // namespace

TEST(TAProcess, SplitsWordsAndQuotedPhrases) {
  const struct {
    const char* words;
    const char* arguments;
  } kTable[] = {
      {"a  b", "<a><b>"},
      {"\"a\"", "<a>"},
      {"\"a b\"", "<a b>"},
      {"\"a   b c\" d", "<a b c><d>"},  // single blanks, whatever stood there
      {"a\"b c\"d", "<a\"b><c\"d>"},    // quotes count only at the ends of words
      {"a\" \"b", "<a\">"},
      {"x \"a b", "<x>"},                    // never closed
      {"x \"a b \"c d\" e", "<x><c d><e>"},  // opened again: the first opening is dropped
      {"\"a \"b\" c\"", "<b><a c>"},
      {"x \"", "<x><>"},  // a lone quote opens and closes
      {"x \"\"", "<x><>"},
      {"a\tb", "<a\tb>"},
      {"*.c $HOME 'a b'", "<*.c><$HOME><'a><b'>"},  // no shell reads it
  };
  for (const auto& row : kTable) {
    EXPECT_EQ(OutputOf(std::string("printf <%s> ") + row.words), row.arguments) << row.words;
  }
}

TEST(TAProcess, FoldsStatuses) {
  const struct {
    const char* command;
    int status;
  } kTable[] = {
      {"true", 0},
      {"sh -c \"exit 1\"", 1},
      {"sh -c \"exit 3\"", 3},
      {"sh -c \"exit 255\"", 255},
      {"sh -c \"kill -9 $$\"", 9},
      {"no-such-program-anywhere", 1},
      {"/no/such/folder/true", 1},
      {"/", 1},
      {"\"true\"", 1},  // the program is taken as it is
      {"", 1},
      {"   ", 1},
  };
  for (const auto& row : kTable) EXPECT_EQ(StatusOf(row.command), row.status) << row.command;
}

TEST(TAProcess, LetsGoOfACollectedChild) {
  TAProcess process;
  int status = 7;
  ASSERT_EQ(process.Start("sh -c \"exit 3\"", 0), 0);
  EXPECT_EQ(process.Wait(status), 0);
  EXPECT_EQ(status, 3);
  EXPECT_EQ(process.Check(status), -1);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(process.Kill(), 256);
  EXPECT_EQ(process.KillWithSig(1), 0);
  VorListValVorString pids;
  EXPECT_EQ(process.GetProcessTree(pids), 0);
  EXPECT_EQ(pids.Size(), 1);
  ASSERT_EQ(process.Start("sh -c \"exit 4\"", 0), 0);
  process.Wait(status);
  EXPECT_EQ(status, 4);
}

// Any of these, done to "0" or "-1", would hit this process or collect the other child.
TEST(TAProcess, WithoutAChildTouchesNobody) {
  TAProcess other;
  ASSERT_EQ(other.Start("sh -c \"exit 5\"", 0), 0);
  siginfo_t info;
  waitid(P_PID, static_cast<id_t>(other.ChildPid()), &info, WEXITED | WNOWAIT);
  for (int pid : {0, -1, -other.ChildPid()}) {
    TAProcess none(pid);
    int status = 7;
    EXPECT_EQ(none.Check(status), -1);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(none.Wait(status), 0);
    EXPECT_EQ(none.Kill(), 256);
    EXPECT_EQ(none.KillTree(), 256);
    EXPECT_EQ(none.KillWithSig(1), 0);
    EXPECT_EQ(none.KillTreeWithSig(1), 0);
    VorListValVorString pids;
    EXPECT_EQ(none.GetProcessTree(pids), -1);
    EXPECT_EQ(pids.Size(), 0);
    EXPECT_STREQ(none.GetErrMsg(), "no error");
  }
  int status = 0;
  EXPECT_EQ(other.Check(status), other.ChildPid());
  EXPECT_EQ(status, 5);
}

TEST(TAProcess, LetsGoOfAChildThatIsCollectedElsewhere) {
  TAProcess process;
  int status = 7;
  ASSERT_EQ(process.Start("true", 0), 0);
  ASSERT_EQ(waitpid(process.ChildPid(), nullptr, 0), process.ChildPid());
  EXPECT_EQ(process.Check(status), -1);
  EXPECT_EQ(process.KillTree(), 256);  // no shell was asked to kill whoever has the number now
}

TEST(TAProcess, ExecFoldsWithABoundOfItsOwn) {
  TAProcess process;
  EXPECT_EQ(process.Exec("exit 0"), 0);
  EXPECT_EQ(process.Exec("exit 1"), 256);
  EXPECT_EQ(process.Exec("exit 2"), 2);
  EXPECT_EQ(process.Exec("kill -9 $$"), 9);
}

TEST(TAProcess, RedirectsAllThreeStreams) {
  TempDir dir;
  const std::string in = dir.Write("in", "read\n");
  dir.Write("out", "a longer text that was there before\n");
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
      int result = -1;
      process.Start("sh -c \"cat; echo error >&2; ls /proc/self/fd/3 && exit 9\"", 0);
      process.Wait(result);
      return result;
    });
    EXPECT_NE(status, 9) << "left open, closed " << closed;
    EXPECT_EQ(dir.Read("out").substr(0, 11), "read\nerror\n") << "closed " << closed;
  }
}

TEST(TAProcess, SearchesThePathAndRunsScripts) {
  TempDir dir;
  chmod(dir.Write("first/tool", "exit 4").c_str(), 0644);    // not allowed: the search goes on
  chmod(dir.Write("second/tool", "exit $1").c_str(), 0755);  // no interpreter named: the shell's
  const int status = InProcess([&] {
    setenv("PATH", (dir / "none" + ":" + (dir / "first") + ":" + (dir / "second")).c_str(), 1);
    return StatusOf("tool 5");
  });
  EXPECT_EQ(status, 5);
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
              sigset_t mask;
              sigemptyset(&mask);
              sigaddset(&mask, SIGUSR2);
              sigprocmask(SIG_SETMASK, &mask, nullptr);
              TAProcess process;
              process.SetOutput(VorString(dir / "out"));
              int status = -1;
              process.Start("cat /proc/self/status", 0);
              process.Wait(status);
              sigset_t after;
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
  std::vector<int> wrong(4);
  for (std::size_t thread = 0; thread < wrong.size(); ++thread) {
    threads.emplace_back([&wrong, thread] {
      for (int code = 1; code <= 25; ++code) {
        const std::string command = "sh -c \"exit " + std::to_string(code) + "\"";
        if (StatusOf(command.c_str()) != code) ++wrong[thread];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4));
}

TEST(TAProcess, ReportsThatThereIsNoChild) {
  EXPECT_EQ(InProcess([] {
              const rlimit none = {0, 0};
              if (setrlimit(RLIMIT_NPROC, &none) != 0) return 1;
              if (getuid() == 0 && setuid(65534) != 0) return 2;  // root has no limit
              TAProcess process;
              if (process.Start("true", 0) != 1) return 3;
              if (process.ChildPid() != 0) return 4;
              return process.GetErrMsg() == "Unable to fork process" ? 0 : 5;
            }),
            0);
}

TEST(TAProcess, ListsAndKillsWholeTrees) {
  Family soft;
  VorListValVorString pids;
  EXPECT_EQ(soft.head.GetProcessTree(pids), 0);
  ASSERT_EQ(pids.Size(), 7);
  EXPECT_EQ(atoi(pids[1]), soft.head.ChildPid());
  EXPECT_EQ(soft.head.KillTreeWithSig(0), 0);
  EXPECT_EQ(soft.AwaitEnd(), 15);
  Family hard;
  EXPECT_EQ(hard.head.KillTree(), 0);
  EXPECT_EQ(hard.AwaitEnd(), 9);
}

TEST(TAProcess, ChecksWithoutBlockingAndKillsTheChildAlone) {
  for (int hard = 0; hard < 2; ++hard) {
    TAProcess process;
    process.SetInput("/no/such/folder/in");  // files that cannot be opened change nothing
    process.SetOutput("/no/such/folder/out");
    ASSERT_EQ(process.Start("sleep 100", 0), 0);
    int status = 7;
    EXPECT_EQ(process.Check(status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(process.KillWithSig(hard), 0);
    siginfo_t info;
    const int pid = process.ChildPid();
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(process.Check(status), pid);
    EXPECT_EQ(status, hard != 0 ? 9 : 15);
  }
}

TEST(TAProcess, ZombiCleanLeavesEndsToTheSystem) {
  EXPECT_EQ(InProcess([] {
              TAProcess ended;
              TAProcess later;
              int status = 7;
              if (ended.Start("sh -c \"exit 3\"", 0) != 0) return 1;
              siginfo_t info;
              waitid(P_ALL, 0, &info, WEXITED | WNOWAIT);
              TAProcess::ZombiClean();
              if (ended.Check(status) != -1 || status != 0) return 2;
              if (later.Start("sh -c \"exit 3\"", 0) != 0) return 3;
              if (later.Wait(status) != 0 || status != 0) return 4;
              return later.Exec("exit 3") == -1 ? 0 : 5;
            }),
            0);
}
