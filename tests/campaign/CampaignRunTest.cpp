#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <string>

#include "campaign/RunTool.h"
#include "support/TempDir.h"

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

class CampaignRun : public testing::Test {
 protected:
  // A test list with this content, as the option that names it.
  std::string Tests(const std::string& content) {
    return "run --tests " + _dir.Write("tests.list", content) + " ";
  }

  TempDir _dir;
};

}  // namespace

TEST_F(CampaignRun, PassesAndKeepsOutput) {
  const Outcome run = Campaign(Tests("# comment\n\n"
                                     "unit/one  sh -c \"echo to-out; echo to-err >&2\"\n"
                                     "  unit/two\t echo \"several words\"\n"
                                     "other echo no\n"
                                     "unit/last echo end") +  // no newline at the end
                               "--results " +
                               _dir / "results" + " 'unit/*'");
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_EQ(_dir.Read("results/unit/one.log"), "to-out\nto-err\n");
  EXPECT_EQ(_dir.Read("results/unit/two.log"), "several words\n");
  EXPECT_EQ(_dir.Read("results/unit/last.log"), "end\n");
  EXPECT_THAT(run.output, HasSubstr("[3/3] "));
  EXPECT_THAT(run.output, HasSubstr("3 tests: 3 passed, in "));
  EXPECT_THAT(run.output, Not(HasSubstr("other")));
}

TEST_F(CampaignRun, ShowsFailuresAndTimeOutsSlowestFirst) {
  const Outcome run = Campaign(Tests("quick true\n"
                                     "code sh -c \"exit 7\"\n"
                                     "missing /no/such/program\n"
                                     "ninetynine sh -c \"exit 99\"\n"
                                     "hang sh -c \"sleep 1000 & wait\"\n") +
                               "--jobs 5 --timeout 1 --junit " + _dir / "junit.xml" + " '*'");
  EXPECT_EQ(run.status, 1);
  const std::string table = run.output.substr(run.output.find("\n\n"));
  EXPECT_THAT(table, MatchesRegex("\n\nname +result +seconds\nhang +timed out \\(99\\) +[1-9]+\\."
                                  "(.|\n)*"));
  EXPECT_THAT(table, HasSubstr("code        failed (7) "));
  EXPECT_THAT(table, HasSubstr("missing     failed (1) "));
  EXPECT_THAT(table, HasSubstr("ninetynine  failed (99) "));
  EXPECT_THAT(table, HasSubstr("5 tests: 1 passed, 3 failed, 1 timed out, in "));
  const std::string junit = _dir.Read("junit.xml");
  EXPECT_THAT(junit, HasSubstr("tests=\"5\" failures=\"4\" errors=\"0\" skipped=\"0\""));
  EXPECT_THAT(junit, HasSubstr("<failure message=\"timed out (99)\">"));
}

TEST_F(CampaignRun, JUnitTextIsWellFormedForAnyBytes) {
  const Outcome run =
      Campaign(Tests("a<b>&\"c\"\xff printf \"toreplace\\\\001<&\\\\377\"\n"
                     "bad/t sh -c \"printf 'x<\\001\\377&y'; exit 1\"\n") +
               "--results " + _dir / "out" + " --junit " + _dir / "junit.xml" + " '*'");
  EXPECT_EQ(run.status, 1);
  const std::string junit = _dir.Read("junit.xml");
  EXPECT_THAT(junit, HasSubstr("name=\"a&lt;b&gt;&amp;&quot;c&quot;?\" classname=\"campaign\""));
  EXPECT_THAT(junit, HasSubstr("name=\"bad/t\" classname=\"bad\""));
  EXPECT_THAT(junit, HasSubstr(">x&lt;??&amp;y</failure>"));
}

TEST_F(CampaignRun, RefusesBadInputInOneLineAndStartsNothing) {
  const std::string mark = _dir / "started";
  const std::string good = Tests("a touch " + mark + "\n");
  auto list = [this, number = 0](const char* content) mutable {
    return "run --tests " + _dir.Write(std::to_string(++number) + "bad.list", content) + " '*'";
  };
  _dir.Write("file", "");
  const struct {
    std::string arguments;
    const char* message;
  } rows[] = {
      {"", "usage: campaign COMMAND"},
      {"walk", "unknown command 'walk'"},
      {"run '*'", "--tests FILE is missing"},
      {good, "the expression is missing"},
      {good + "'*' '*'", "more than one expression"},
      {good + "--jobs 0 '*'", "--jobs takes a whole number from 1 on, not '0'"},
      {good + "--jobs 2x '*'", "--jobs takes a whole number"},
      {good + "--timeout -1 '*'", "--timeout takes a whole number from 0 on"},
      {good + "--frobnicate '*'", "unknown option --frobnicate"},
      {good + "'*' --jobs", "--jobs needs a value"},
      {good + "'b*'", "'b*' selects no test"},
      {good + "--results " + _dir / "file" + " '*'", "cannot make the folder"},
      {good + "--junit " + _dir / "no/folder" + " '*'", "cannot write"},
      {"run --tests " + _dir / "missing" + " '*'", "missing: No such file"},
      {"run --tests " + _dir.Path() + " '*'", "Is a directory"},
      {list("a true\nb\n"), "bad.list:2: test 'b' has no command"},
      {list("a true\nb true\na false\n"), "bad.list:3: test 'a' is there twice"},
      {list("a\xc2\x9b"
            "31m true\n"),
       "bad.list:1: a name with control characters cannot be used"},
      {list("a\x9b true\n"), "control characters"},
      {list("a\xe2\x80\xae true\n"), "control characters"},
      {list("../a true\n"), "'../a' cannot be used as a test name"},
      {list("/a true\n"), "cannot be used"},
      {list("a/./b true\n"), "cannot be used"},
  };
  for (const auto& row : rows) {
    const Outcome run = Campaign(row.arguments);
    EXPECT_EQ(run.status, 2) << row.arguments;
    EXPECT_THAT(run.output, HasSubstr(row.message)) << row.arguments;
    if (!row.arguments.empty()) {
      EXPECT_THAT(run.output, StartsWith("campaign: ")) << row.arguments;
      EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << run.output;
    }
  }
  EXPECT_NE(access(mark.c_str(), F_OK), 0);
}

TEST_F(CampaignRun, InterruptKillsRunningTreesAndStillReports) {
  const std::string pidFile = _dir / "pid";
  // The second process of the tree tells its number and then hangs.
  const std::string list = _dir.Write(
      "tests.list", "hang sh -c \"sh -c 'echo $$ > " + pidFile + ".new; mv " + pidFile + ".new " +
                        pidFile + "; sleep 1000; true' & wait\"\nlater touch " + _dir / "later" +
                        "\n");
  FILE* stream = popen(("echo $$; exec " VOR_CAMPAIGN " run --tests " + list +
                        " --jobs 1 --junit " + _dir / "junit.xml" + " '*'")
                           .c_str(),
                       "r");
  int tool = 0;
  ASSERT_EQ(fscanf(stream, "%d", &tool), 1);
  for (int i = 0; i < 3000 && access(pidFile.c_str(), F_OK) != 0; ++i) usleep(10000);
  const int grandchild = std::stoi(_dir.Read("pid"));
  kill(tool, SIGINT);
  const std::string output = ReadAll(stream);
  EXPECT_EQ(WEXITSTATUS(pclose(stream)), 1);
  EXPECT_THAT(output, HasSubstr("2 tests: 0 passed, 1 interrupted, 1 not run"));
  EXPECT_THAT(_dir.Read("junit.xml"), HasSubstr("failures=\"1\" errors=\"0\" skipped=\"1\""));
  EXPECT_NE(access((_dir / "later").c_str(), F_OK), 0);
  // Killed: gone, or a zombie that nobody has collected yet.
  std::string state;
  for (int i = 0; i < 3000; ++i, usleep(10000)) {
    FILE* stat = fopen(("/proc/" + std::to_string(grandchild) + "/stat").c_str(), "r");
    state = stat == nullptr ? "gone" : ReadAll(stat);
    if (stat != nullptr) fclose(stat);
    if (state == "gone" || state.find(") Z ") != std::string::npos) break;
  }
  EXPECT_TRUE(state == "gone" || state.find(") Z ") != std::string::npos) << state;
}

TEST_F(CampaignRun, ThousandTestsUnderALimit) {
  std::string list;
  for (int i = 0; i < 1000; ++i) list += "t" + std::to_string(i) + " true\n";
  const Outcome run = Campaign(Tests(list) + "--jobs 8 '*&&!t99*'");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.output, HasSubstr("989 tests: 989 passed"));
}
