#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "VorToolsInfrastructure.h"
#include "campaign/RunTool.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using CampaignRefusal = CampaignTest;

TEST_F(CampaignRefusal, OfBadInputIsOneLineAndStartsNothing) {
  TASocket used;
  used.OpenServer(0);
  const std::string tests = Tests("a touch " + _dir / "started" + "\n");
  const std::string run = "run " + tests;
  const std::string control = _dir.Write("load.ctl", "");
  const std::string load = run + "'*' --load " + control + " ";
  const std::string serve = "serve " + tests + "--port ";
  auto list = [this, number = 0](const char* content) mutable {
    return "run --tests " + _dir.Write(std::to_string(++number) + "bad.list", content) + " '*'";
  };
  _dir.Write("file", "");
  const struct {
    std::string arguments;
    const char* message;
    int status = 2;
  } rows[] = {
      {"walk", "unknown command 'walk'"},
      {"run '*'", "--tests FILE is missing"},
      {run, "the expression is missing"},
      {run + "'*' '*'", "more than one expression"},
      {run + "--jobs 0 '*'", "--jobs takes a whole number from 1 on, not '0'"},
      {run + "--timeout -1 '*'", "--timeout takes a whole number from 0 on"},
      {run + "-xy '*'", "unknown option -x"},
      {run + "'*' --jobs", "--jobs needs a value"},
      {run + "--owners org", "--owners needs 2 values, ORG KVR"},
      {run + "'b*'", "'b*' selects no test"},
      {run + "--results " + _dir / "file" + " '*'", "cannot make the folder"},
      {run + "--junit " + _dir / "no/folder" + " '*'", "cannot write"},
      {"run --tests " + _dir / "missing" + " '*'", "missing: No such file"},
      {run + "'*' --load '" + control + ";' scott x db", "cannot be given a file named"},
      {run + "'*' --load " + _dir.Path() + " scott x db", "Is a directory"},
      {load + "scott '$(tiger)' db", "the password is empty or holds characters"},
      {load + "scott env:tiger db", "that holds the password is not set"},
      {load + "scott file:tiger db", "cannot read the file that holds the password"},
      {load + "scott x 'tiger>f'", "the connection is empty or holds characters"},
      {load + "scott x db --results 'a b'", "a file named 'a b/campaign.csv'"},
      {list("a true\nb\n"), "bad.list:2: test 'b' has no command"},
      {list("a true\nb true\na false\n"), "bad.list:3: test 'a' is there twice"},
      {list("a\xc2\x9b true\n"), "bad.list:1: a name with control characters cannot be used"},
      {list("a\x9b true\n"), "control characters"},
      {list("a\xe2\x80\xae true\n"), "control characters"},
      {list("../a true\n"), "'../a' cannot be used as a test name"},
      {list("/a true\n"), "cannot be used"},
      {list("a/./b true\n"), "cannot be used"},
      {serve + "65536", "--port takes a whole number from 0 to 65535, not '65536'"},
      {serve + std::to_string(used.GetPort()), "unable to bind server socket"},
      {serve + "0 '*'", "serve takes no expression"},
      {serve + "0 --junit x", "unknown option --junit"},
      {serve + "0 --token " + _dir.Write("empty", "\n"), "does not hold a token"},
      {"request --host localhost --port 1 '*'", "unable to connect client socket to server", 3},
  };
  for (const auto& row : rows) {
    const Outcome refused = Campaign(row.arguments);
    EXPECT_EQ(refused.status, row.status) << row.arguments;
    EXPECT_THAT(refused.output, StartsWith("campaign: ")) << row.arguments;
    EXPECT_THAT(refused.output, HasSubstr(row.message)) << row.arguments;
    EXPECT_THAT(refused.output, Not(HasSubstr("tiger"))) << "shows what may be the password";
    EXPECT_EQ(refused.output.find('\n'), refused.output.size() - 1) << refused.output;
  }
  EXPECT_FALSE(Exists("started"));
  const Outcome none = Campaign("");
  EXPECT_EQ(none.status, 2);
  EXPECT_THAT(none.output, StartsWith("usage: campaign COMMAND"));
}
