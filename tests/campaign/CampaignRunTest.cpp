#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "campaign/RunTool.h"
#include "support/Eventually.h"

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

class CampaignRun : public CampaignTest {
 protected:
  // Starts the tool in the background with \a output, which is closed here, as standard output.
  FILE* StartWithOutput(int output, const std::string& arguments) const {
    const int own = dup(STDOUT_FILENO);
    dup2(output, STDOUT_FILENO);
    close(output);
    FILE* stream = popen(("echo $$ >" + _dir / "tool" + "; exec " VOR_CAMPAIGN " " + arguments +
                          " 2>" + _dir / "errors")
                             .c_str(),
                         "w");
    dup2(own, STDOUT_FILENO);
    close(own);
    return stream;
  }
  // The line of a test that writes its number to the file pid and hangs.
  std::string Hanging() const {
    return "hang sh -c \"echo $$ >" + _dir / "new; mv " + _dir / "new " + _dir / "pid" +
           "; exec sleep 1000\"\n";
  }
  // Waits until the process whose number is in a file is gone, or a zombie that nobody has reaped.
  bool IsKilled(const char* pidFile) const {
    const std::string state = "/proc/" + std::to_string(std::stoi(_dir.Read(pidFile))) + "/stat";
    return Eventually([&] {
      std::string line = "gone) Z ";
      std::getline(std::ifstream(state), line);
      return line.find(") Z ") != std::string::npos;
    });
  }
};

}  // namespace

TEST_F(CampaignRun, PassesAndKeepsOutput) {
  const Outcome run =
      Campaign("run " +
               Tests("\xef\xbb\xbfunit/one  sh -c \"echo to-out; echo to-err >&2\"\n"
                     "  unit/two\t echo \"several words\"\n"
                     "# comment\n\nother echo no\n"
                     "unit/" +
                     std::string(99, 'x') +
                     " true\n"
                     "unit/last echo end") +  // no newline at the end
               "--results " +
               _dir / "results" + " 'unit/*'");
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_EQ(_dir.Read("results/unit/one.log"), "to-out\nto-err\n");
  EXPECT_EQ(_dir.Read("results/unit/two.log"), "several words\n");
  EXPECT_EQ(_dir.Read("results/unit/last.log"), "end\n");
  EXPECT_THAT(run.output, HasSubstr("\nunit/one" + std::string(42, ' ') + "passed  "));
  EXPECT_THAT(run.output, HasSubstr("4 tests: 4 passed, in "));
  EXPECT_THAT(run.output, Not(HasSubstr("other")));
}

TEST_F(CampaignRun, ShowsAnyFailureSlowestFirst) {
  const Outcome run = Campaign("run " +
                               Tests("quick true\n"
                                     "code sh -c \"exit 7\"\n"
                                     "missing /no/\033such/program\n"
                                     "locked /etc/passwd\n"
                                     "ninetynine sh -c \"exit 99\"\n"
                                     "hang sh -c \"sleep 1000 & wait\"\n"
                                     "a<b>&\"c\"\xff true\n"
                                     "bad/t sh -c \"printf 'x<\\001\\377&y'; exit 1\"\n") +
                               "--jobs 8 --timeout 1 --results " + _dir / "out" + " --junit " +
                               _dir / "junit.xml" + " '*'");
  EXPECT_EQ(run.status, 1);
  const std::string table = run.output.substr(run.output.find("\n\n"));
  EXPECT_THAT(table, MatchesRegex("\n\nname +result +seconds\nhang +timed out \\(99\\) +[1-9]+\\."
                                  "(.|\n)*"));
  EXPECT_THAT(table, HasSubstr("missing     not found (/no/?such/program) "));
  EXPECT_THAT(table, HasSubstr("locked      not executable (/etc/passwd) "));
  EXPECT_THAT(table, HasSubstr("ninetynine  failed (99) "));
  EXPECT_THAT(
      table,
      HasSubstr("8 tests: 2 passed, 3 failed, 1 timed out, 1 not found, 1 not executable, in "));
  const std::string junit = _dir.Read("junit.xml");
  EXPECT_THAT(junit, HasSubstr("tests=\"8\" failures=\"6\" errors=\"0\" skipped=\"0\""));
  EXPECT_THAT(junit, HasSubstr("<failure message=\"timed out (99)\">"));
  EXPECT_THAT(junit, HasSubstr("name=\"a&lt;b&gt;&amp;&quot;c&quot;?\" classname=\"campaign\""));
  EXPECT_THAT(junit, HasSubstr("name=\"bad/t\" classname=\"bad\""));
  EXPECT_THAT(junit, HasSubstr(">x&lt;??&amp;y</failure>"));
}

TEST_F(CampaignRun, IsHonestInHostileSurroundings) {
  // Nobody's processes are limited to the tool itself; root's are not limited at all.
  const std::string asNobody =
      geteuid() != 0
          ? ""
          : "setpriv --reuid=54321 --inh-caps=+dac_override --ambient-caps=+dac_override ";
  const struct {
    const char* what;
    std::string before;  // the tool
    std::string tests;
    std::string options;
    int status;
    const char* output;
  } rows[] = {
      {"child signal ignored", "env --ignore-signal=CHLD ", "a false\nb true\n", "", 1,
       "2 tests: 1 passed, 1 failed"},
      {"no process left", "ASAN_OPTIONS=detect_leaks=0 prlimit --nproc=1 " + asNobody, "a true\n",
       "", 1, "a: not started (Resource temporarily unavailable)"},
      {"no output", "sh -c 'exec \"$@\" >&-' sh ", "a true\n", "", 0, ""},
      {"open report", "", "a sh -c \"! ls -l /proc/self/fd | grep -q " + _dir.Path() + "\"\n", "",
       0, "1 passed"},
      {"interrupts ignored", "env --ignore-signal=HUP,INT,TERM ",
       "a sh -c \"kill -HUP $PPID; kill -INT $PPID; kill -TERM $PPID\"\n", "", 0, "1 passed"},
      {"input", "echo typed | ", "a sh -c \"! read line\"\n", "", 0, "1 passed"},
      {"log removed", "",
       "a sh -c \"rm -r " + _dir / "out/b" + "; touch " + _dir / "out/b" + "\"\nb/x true\n",
       "--results " + _dir / "out ", 1, "b/x.log: Not a directory)"},
      {"log replaced", "", "a sh -c \"cd " + _dir / "log" + "; rm a.log; mkfifo a.log; exit 1\"\n",
       "--results " + _dir / "log ", 1, "a: failed (1)"},
      {"strict order of options", "POSIXLY_CORRECT=1 ", "a true\n", "", 0, "1 passed"},
#ifndef __SANITIZE_THREAD__  // which writes a file before main
      {"file size limited", "prlimit --fsize=0 ", "a true\n", "", 2, "junit/x: File too large\n"},
#endif
      {"disk full", "", "a true\n", "--junit /dev/full ", 2,
       "cannot write /dev/full: No space left on device\n"},
  };
  _dir.Write("junit/x", "");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const Outcome run = Campaign("run " + Tests(row.tests) + "--jobs 1 --junit " +
                                     _dir / "junit/x" + " " + row.options + "'*'",
                                 row.before);
    EXPECT_EQ(run.status, row.status) << run.output;
    EXPECT_THAT(run.output, HasSubstr(row.output));
    EXPECT_THAT(_dir.Read("junit/x"), StartsWith("<?xml"));
  }
  const std::filesystem::directory_iterator files(_dir / "junit");
  EXPECT_EQ(std::distance(files, {}), 1) << "leaves temporary files";
}

TEST_F(CampaignRun, ReplacesAReportInSharedMemory) {
  const std::string report = "/dev/shm/campaign" + std::to_string(getpid());
  std::ofstream(report) << "old";
  const Outcome run = Campaign("run " + Tests("a true\n") + "--junit " + report +
                               " '*' >/dev/null; cat " + report + "; rm " + report);
  EXPECT_THAT(run.output, StartsWith("<?xml"));
}

TEST_F(CampaignRun, InterruptKillsRunningTreesAndStillReports) {
  const std::string pidFile = _dir / "pid";
  // The second process of the tree writes its number and then hangs.
  const std::string tests =
      Tests("hang sh -c \"sh -c 'echo $$ > " + pidFile + ".new; mv " + pidFile + ".new " + pidFile +
            "; sleep 1000; true' & wait\"\nlater touch " + _dir / "later" + "\n");
  FILE* stream = popen(("echo $$; exec " VOR_CAMPAIGN " run " + tests + " --jobs 1 --junit " +
                        _dir / "junit.xml" + " '*'")
                           .c_str(),
                       "r");
  int tool = 0;
  ASSERT_EQ(fscanf(stream, "%d", &tool), 1);
  ASSERT_TRUE(Eventually([&] { return Exists("pid"); }));
  kill(tool, SIGTERM);
  const Outcome run = End(stream);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("2 tests: 0 passed, 1 interrupted, 1 not run"));
  EXPECT_THAT(_dir.Read("junit.xml"), HasSubstr("failures=\"1\" errors=\"0\" skipped=\"1\""));
  EXPECT_FALSE(Exists("later"));
  EXPECT_TRUE(IsKilled("pid"));
}

TEST_F(CampaignRun, PausedReaderDelaysNeitherLimitsNorInterrupts) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
  while (write(ends[1], "x", 1) == 1) {
  }
  const int blocking = open(("/proc/self/fd/" + std::to_string(ends[1])).c_str(), O_WRONLY);
  FILE* stream = StartWithOutput(blocking, "run --jobs 1 --timeout 1 " +
                                               Tests("quick true\nslow sleep 30\n" + Hanging()) +
                                               "--junit " + _dir / "junit.xml" + " '*'");
  EXPECT_TRUE(Eventually([&] { return Exists("pid"); }));
  kill(std::stoi(_dir.Read("tool")), SIGINT);
  EXPECT_EQ(WEXITSTATUS(pclose(stream)), 2);
  EXPECT_THAT(_dir.Read("junit.xml"), HasSubstr("<failure message=\"timed out (99)\">"));
  EXPECT_TRUE(IsKilled("pid"));
  close(ends[0]);
  close(ends[1]);
}

TEST_F(CampaignRun, LostReaderOfASocketEndsIt) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  FILE* stream = StartWithOutput(
      ends[1], "run --timeout 9 " + Tests(Hanging()) + "--junit " + _dir / "junit.xml" + " '*'");
  EXPECT_TRUE(Eventually([&] { return Exists("pid"); }));
  close(ends[0]);
  EXPECT_EQ(WEXITSTATUS(pclose(stream)), 2);
  EXPECT_THAT(_dir.Read("junit.xml"), HasSubstr("<failure message=\"interrupted\">"));
}

TEST_F(CampaignRun, LostReaderEndsIt) {
  const std::string tests = Tests("quick true\nhang sh -c \"echo $$ >" + _dir / "pid" +
                                  "; exec sleep 1000\"\nlater touch " + _dir / "later" + "\n");
  const Outcome run = End(
      popen(("{ " VOR_CAMPAIGN " run --jobs 1 --timeout 9 " + tests + "--junit " +
             _dir / "junit.xml" + " '*' 2>" + _dir / "errors" + "; echo $? >" + _dir / "status" +
             "; } | { read line; echo \"$line\"; for i in $(seq 999); do test -s " + _dir / "pid" +
             " && break; sleep 0.01; done; }")
                .c_str(),
            "r"));
  EXPECT_THAT(run.output, StartsWith("[1/3] quick: passed"));
  EXPECT_EQ(_dir.Read("status"), "2\n");
  EXPECT_EQ(_dir.Read("errors"), "campaign: cannot write to standard output: Broken pipe\n");
  EXPECT_THAT(_dir.Read("junit.xml"), HasSubstr("<failure message=\"interrupted\">"));
  EXPECT_FALSE(Exists("later"));
  EXPECT_TRUE(IsKilled("pid"));
}
