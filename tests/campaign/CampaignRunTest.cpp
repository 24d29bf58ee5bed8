#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <string>

#include "campaign/RunTool.h"
#include "support/Eventually.h"

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

using CampaignRun = CampaignTest;

TEST_F(CampaignRun, PassesAndKeepsOutput) {
  const Outcome run = Campaign("run " +
                               Tests("# comment\n\n"
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

TEST_F(CampaignRun, ShowsAnyFailureSlowestFirst) {
  const Outcome run = Campaign("run " +
                               Tests("quick true\n"
                                     "code sh -c \"exit 7\"\n"
                                     "missing /no/such/program\n"
                                     "ninetynine sh -c \"exit 99\"\n"
                                     "hang sh -c \"sleep 1000 & wait\"\n"
                                     "a<b>&\"c\"\xff true\n"
                                     "bad/t sh -c \"printf 'x<\\001\\377&y'; exit 1\"\n") +
                               "--jobs 7 --timeout 1 --results " + _dir / "out" + " --junit " +
                               _dir / "junit.xml" + " '*'");
  EXPECT_EQ(run.status, 1);
  const std::string table = run.output.substr(run.output.find("\n\n"));
  EXPECT_THAT(table, MatchesRegex("\n\nname +result +seconds\nhang +timed out \\(99\\) +[1-9]+\\."
                                  "(.|\n)*"));
  EXPECT_THAT(table, HasSubstr("missing     failed (1) "));
  EXPECT_THAT(table, HasSubstr("ninetynine  failed (99) "));
  EXPECT_THAT(table, HasSubstr("7 tests: 2 passed, 4 failed, 1 timed out, in "));
  const std::string junit = _dir.Read("junit.xml");
  EXPECT_THAT(junit, HasSubstr("tests=\"7\" failures=\"5\" errors=\"0\" skipped=\"0\""));
  EXPECT_THAT(junit, HasSubstr("<failure message=\"timed out (99)\">"));
  EXPECT_THAT(junit, HasSubstr("name=\"a&lt;b&gt;&amp;&quot;c&quot;?\" classname=\"campaign\""));
  EXPECT_THAT(junit, HasSubstr("name=\"bad/t\" classname=\"bad\""));
  EXPECT_THAT(junit, HasSubstr(">x&lt;??&amp;y</failure>"));
}

TEST_F(CampaignRun, InterruptKillsRunningTreesAndStillReports) {
  const std::string pidFile = _dir / "pid";
  // The second process of the tree tells its number and then hangs.
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
  kill(tool, SIGINT);
  const Outcome run = End(stream);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("2 tests: 0 passed, 1 interrupted, 1 not run"));
  EXPECT_THAT(_dir.Read("junit.xml"), HasSubstr("failures=\"1\" errors=\"0\" skipped=\"1\""));
  EXPECT_FALSE(Exists("later"));
  // Killed: gone, or a zombie that nobody has collected yet.
  const std::string state = "/proc/" + std::to_string(std::stoi(_dir.Read("pid"))) + "/stat";
  EXPECT_TRUE(Eventually([&] {
    std::string line = "gone) Z ";
    std::getline(std::ifstream(state), line);
    return line.find(") Z ") != std::string::npos;
  }));
}
