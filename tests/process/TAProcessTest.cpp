#include "process/TAProcess.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/sched.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "base/PosixFile.h"
#include "base/VorListValVorString.h"
#include "process/TAProcessList.h"
#include "support/Eventually.h"
#include "support/InProcess.h"
#include "support/TempDir.h"
#include "support/TreeOutput.h"

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

constexpr int kSkipped = 77;

// Blocks until the process ends, which is not reaped.
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

TEST(TAProcess, FoldsStatusesAndDistinguishesEnds) {
  constexpr char kNotFound[] = "could not start: No such file or directory";
  constexpr char kNotAllowed[] = "could not start: Permission denied";
  const TempDir dir;
  const struct {
    std::string command;
    int status;
    const char* end;
  } rows[] = {{"true", 0, "exit 0"},
              {"sh -c \"exit 9\"", 9, "exit 9"},
              {"sh -c \"exit 255\"", 255, "exit 255"},
              {"sh -c \"kill -9 $$\"", 9, "killed by SIGKILL"},
              {"sh -c \"kill -34 $$\"", 34, "killed by signal 34"},
              {"   ", 1, kNotFound},
              {"no-such-program", 1, kNotFound},
              {"\"true\"", 1, kNotFound},  // the program is taken as it is
              {"/", 1, kNotAllowed},
              {dir.Write("data", ""), 1, kNotAllowed}};
  const TAProcessEnd crash{TAProcessEnd::Signalled, SIGSEGV, true, 0};
  EXPECT_STREQ(crash.Describe(), "killed by SIGSEGV (core dumped)");
  const TreeOutput pipe;  // such children are started in another way
  for (const VorString& output : {VorString(), pipe.Path()}) {
    for (const auto& [command, status, end] : rows) {
      TAProcess process;
      EXPECT_STREQ(process.GetEnd().Describe(), "not ended");
      process.SetOutput(output);
      EXPECT_EQ(RunToEnd(process, command), status) << command;
      EXPECT_STREQ(process.GetEnd().Describe(), end) << command;
      EXPECT_EQ(process.Kill(), 256) << "its number may be a stranger's";
      VorListValVorString pids;
      EXPECT_EQ(process.GetProcessTree(pids), 0);
      EXPECT_EQ(pids.Size(), 1);
    }
  }
  EXPECT_EQ(TAProcess().Exec("exit 1"), 256);  // has a bound of its own
  EXPECT_EQ(TAProcess().Exec("exit 2"), 2);
}

// Any of these, done to "0" or "-1", would hit this process or reap the other child.
TEST(TAProcess, WithoutAChildSignalsNoProcess) {
  TAProcess other;
  ASSERT_EQ(other.Start("sh -c \"exit 5\"", 0), 0);
  AwaitZombie(other.ChildPid());
  for (int pid : {0, -1, -other.ChildPid()}) {
    TAProcess none(pid);
    int status = 7;
    EXPECT_EQ(none.Check(status), -1);
    EXPECT_EQ(none.Wait(status), 0);
    EXPECT_EQ(none.Kill(), 256);
    EXPECT_EQ(none.KillTree(), 256);
    EXPECT_EQ(none.KillWithSig(1), 0);
    EXPECT_EQ(none.KillTreeWithSig(1), 0);
    VorListValVorString pids;
    EXPECT_EQ(none.GetProcessTree(pids), -1);
    EXPECT_STREQ(none.GetErrMsg(), "no error");
  }
  int status = 0;
  EXPECT_EQ(other.Check(status), other.ChildPid());
  EXPECT_EQ(status, 5);
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
      const int code =
          RunToEnd(process, "sh -c \"cat; echo error >&2; ls /proc/self/fd/3 && exit 9\"");
      for (int fd = 0; fd < 3; ++fd) {
        if ((closed >> fd & 1) != 0 && fcntl(fd, F_GETFD) >= 0) return 9;  // taken by the library
      }
      return code;
    });
    EXPECT_NE(status, 9) << "left open, closed " << closed;
    EXPECT_EQ(dir.Read("out").substr(0, 11), "read\nerror\n") << "closed " << closed;
  }
}

TEST(TAProcess, SearchesThePathAndRunsScripts) {
  TempDir dir;
  chmod(dir.Write("first/tool", "exit 4").c_str(), 0644);  // not allowed: the search goes on
  chmod(dir.Write("first/data", "exit 4").c_str(), 0644);
  chmod(dir.Write("second/tool", "exit $1").c_str(), 0755);  // no interpreter named: the shell's
  const std::string path = dir / "none" + ":" + (dir / "first") + ":" + (dir / "second");
  EXPECT_EQ(InProcess([&] {
              setenv("PATH", path.c_str(), 1);
              if (freopen((dir / "out").c_str(), "w", stdout) == nullptr) return 2;
              printf("written once");  // not by a child that cannot be started, too
              TAProcess data;
              RunToEnd(data, "data");
              return data.GetEnd().code == EACCES ? StatusOf("tool 5") : 1;
            }),
            5);
  EXPECT_EQ(dir.Read("out"), "written once");
}

TEST(TAProcess, GivesTheChildCleanSignals) {
  TempDir dir;
  ASSERT_EQ(InProcess([&] {
              for (const int ignored : {SIGPIPE, SIGHUP}) signal(ignored, SIG_IGN);
              for (const int handled : {SIGUSR1, SIGINT}) signal(handled, [](int) {});
              sigset_t mask, after;
              sigemptyset(&mask);
              sigaddset(&mask, SIGINT);
              sigprocmask(SIG_SETMASK, &mask, nullptr);
              raise(SIGINT);
              TAProcess process;
              process.SetOutput(VorString(dir / "out"));
              const int status = RunToEnd(process, "cat /proc/self/status");
              if (process.Exec("true") != 0) return 2;
              sigpending(&after);
              if (sigismember(&after, SIGINT) != 1) return 3;  // lost in the shell's time
              sigprocmask(SIG_SETMASK, nullptr, &after);
              return status + (sigismember(&after, SIGUSR1) != 0 ? 1 : 0);
            }),
            0);
  const std::string out = dir.Read("out");
  const auto signals = [&](const std::string& name) {
    return std::stoull(out.substr(out.find(name) + name.size()), nullptr, 16);
  };
  EXPECT_EQ(signals("SigBlk:"), 1u << (SIGINT - 1));
  EXPECT_EQ(signals("SigCgt:"), 0u);
  EXPECT_NE(signals("SigIgn:") & 1u << (SIGHUP - 1), 0u);
  EXPECT_EQ(signals("SigIgn:") & 1u << (SIGPIPE - 1), 0u);
}

TEST(TAProcess, ExecWorksInForkedChildrenOfAThreadedProcess) {
  EXPECT_EQ(InProcess([] {
              signal(SIGINT, SIG_DFL);
              std::atomic<bool> isOver = false;
              std::atomic<int> failed = 0;
              std::vector<std::thread> threads;
              for (int code = 2; code < 6; ++code) {
                threads.emplace_back([&, code] {
                  const std::string exit = "exit " + std::to_string(code);
                  while (!isOver) {
                    if (StatusOf("sh -c \"" + exit + "\"") != code) ++failed;
                    if (TAProcess().Exec(exit) != code) ++failed;
                  }
                });
              }
              for (int fork = 0; fork < 25 && failed == 0; ++fork) {
                const int code = InProcess([] {
                  alarm(20);  // it would hang otherwise
                  if (signal(SIGINT, SIG_DFL) == SIG_IGN) return 1;
                  return TAProcess().Exec("exit 9");
                });
                if (code != 9) ++failed;
              }
              isOver = true;
              for (std::thread& thread : threads) thread.join();
              return failed.load();
            }),
            0);
}

// Shells that start another child whenever theirs dies.  An orphan keeps the pipe open.
TEST(TAProcess, ListsAndKillsTreesThatRestartWhatDies) {
  const TempDir dir;
  const std::string script = dir.Write("restart.sh",
                                       "for i in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15; do\n"
                                       "  (while :; do sh -c 'echo; exec sleep 20'; done) & done\n"
                                       "wait\n");
  for (int round = 0; round < 6; ++round) {
    TreeOutput output;
    TAProcess head;
    head.SetOutput(output.Path());
    head.Start(VorString("sh " + script), 0);
    output.ReadLines(15);
    VorListValVorString pids;
    EXPECT_EQ(head.GetProcessTree(pids), 0);
    EXPECT_EQ(atoi(pids[1]), head.ChildPid());
    EXPECT_GT(pids.Size(), 15);
    const int hard = round % 3;
    EXPECT_EQ(hard == 2 ? head.KillTree() : head.KillTreeWithSig(hard), 0);
    ASSERT_TRUE(output.Ends()) << "round " << round;
    int status;
    head.Wait(status);
    EXPECT_EQ(status, hard == 0 ? 15 : 9);
  }
}

// Those that survive the kill go on, also if a signal arrives that ends this process.
TEST(TAProcess, LeavesNothingStopped) {
  const TempDir dir;
  const std::string script = dir.Write("trap.sh",
                                       "trap : TERM; trap 'echo; kill $!' CONT\n"
                                       "sh -c 'echo; exec sleep 20' & wait; wait\n");
  for (const bool isEnded : {false, true}) {
    TreeOutput output;
    TAProcess head;
    head.SetOutput(output.Path());
    head.Start(VorString("sh " + script), 0);
    output.ReadLines(1);
    EXPECT_EQ(InProcess([&] {
                int pid = head.ChildPid();
                if (!isEnded) return TAProcess(pid).KillTreeWithSig(0);
                setenv("whence_ro", "kill $PPID; :", 1);
                return TAProcess(pid).KillTree();
              }),
              isEnded ? -1 : 0);
    output.ReadLines(1);
    EXPECT_TRUE(output.Ends());
    int status;
    head.Wait(status);
  }
}

TEST(TAProcess, KillsEvenIfForkFails) {
  TreeOutput output;
  EXPECT_EQ(InProcess([&] {
              if (getuid() == 0 && setuid(65534) != 0) return 1;  // root has no limit
              TAProcess head;
              head.SetOutput(output.Path());
              head.Start("sh -c \"sleep 20 & sleep 20 & echo; wait\"", 0);
              output.ReadLines(1);
              const rlimit none = {0, 0};
              setrlimit(RLIMIT_NPROC, &none);
              if (head.KillTree() != -1 || !output.Ends()) return 2;
              if (head.Start("true", 0) != 1 || head.ChildPid() != 0) return 3;
              if (head.GetErrMsg() != "Unable to fork process") return 4;
              TAProcessList list;  // its return code shows nothing
              list.Start("true", 0);
              list.Check();
              list.Check();
              if (list.GetReturnCode(1) != 0) return 5;
              const bool isKnown = list.GetEnd(1).kind == TAProcessEnd::NotStarted;
              return isKnown && list.GetEnd(1).code == EAGAIN ? 0 : 6;
            }),
            0);
}

// The system has reaped the child and reused its number for another process.
TEST(TAProcess, NeverSignalsAnUnrelatedProcess) {
  const int result = InProcess([] {
    signal(SIGCHLD, SIG_IGN);
    TAProcess process;
    process.Start("true", 0);
    const int pid = process.ChildPid();
    if (!Eventually([&] { return kill(pid, 0) != 0; })) return 1;
    clone_args stranger = {};
    stranger.flags = CLONE_PARENT;  // a child of the test itself
    stranger.set_tid = reinterpret_cast<std::uintptr_t>(&pid);
    stranger.set_tid_size = 1;
    const long created = syscall(SYS_clone3, &stranger, sizeof stranger);
    while (created == 0) pause();
    if (created != pid) return kSkipped;
    process.KillWithSig(1);
    process.KillTreeWithSig(1);
    const bool isLeft = process.Kill() == 256 && process.KillTree() == 256;
    kill(pid, SIGUSR1);
    return isLeft ? 0 : 2;
  });
  if (result == kSkipped) GTEST_SKIP() << "this user cannot choose identifiers";
  EXPECT_EQ(result, 0);
  int status = 0;
  waitpid(-1, &status, 0);
  EXPECT_EQ(WTERMSIG(status), SIGUSR1);
}

TEST(TAProcess, WritesAndKillsWithoutAFreeDescriptor) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer opens a pipe to check a virtual call";
#endif
  TreeOutput output;
  EXPECT_EQ(InProcess([&] {
              TAProcess head;
              head.SetOutput(output.Path());
              head.Start("sh -c \"sleep 20 & echo; wait\"", 0);
              output.ReadLines(1);
              const TempDir dir;
              const rlimit few = {40, 40};
              setrlimit(RLIMIT_NOFILE, &few);
              while (open("/dev/null", O_RDONLY) >= 0) continue;
              TAProcess writer;
              writer.SetOutput(VorString(dir / "out"));
              if (RunToEnd(writer, "echo x") != 0) return 1;
              head.KillTree();
              if (!output.Ends()) return 2;
              close_range(30, 39, 0);
              return dir.Read("out") == "x\n" ? 0 : 3;
            }),
            0);
}

TEST(TAProcess, ChecksWithoutBlockingAndKillsTheChildAlone) {
  for (int hard = 0; hard < 2; ++hard) {
    TAProcess process;
    process.SetInput("/no/such/directory/in");  // files that cannot be opened change nothing
    process.SetOutput("/no/such/directory/out");
    ASSERT_EQ(process.Start("sleep 100", 0), 0);
    int status = 7;
    EXPECT_EQ(process.Check(status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(process.KillWithSig(hard), 0);
    AwaitZombie(process.ChildPid());
    EXPECT_EQ(process.Check(status), process.ChildPid());
    EXPECT_EQ(status, hard != 0 ? 9 : 15);
  }
}

TEST(TAProcess, ZombiCleanLeavesEndsToTheSystem) {
  EXPECT_EQ(InProcess([] {
              TAProcess ended, later;
              TAProcessList list;
              int status = 7;
              list.Start("sh -c \"exit 3\"", 0);
              list.Check();
              waitpid(-1, nullptr, 0);
              ended.Start("sh -c \"exit 3\"", 0);
              AwaitZombie(ended.ChildPid());
              TAProcess::ZombiClean();
              if (ended.Check(status) != -1 || status != 0) return 2;
              if (ended.GetEnd().Describe() != "its end was collected elsewhere") return 3;
              if (RunToEnd(later, "sh -c \"exit 3\"") != 0 || later.Exec("exit 3") != -1) return 4;
              if (list.WaitForChange(-1) != 1 || list.Check() != 1) return 5;
              if (list.GetStatus(1) != TAProcessList::Done || list.GetReturnCode(1) != 0) return 6;
              return list.GetEnd(1).kind == TAProcessEnd::Lost ? 0 : 7;
            }),
            0);
}
