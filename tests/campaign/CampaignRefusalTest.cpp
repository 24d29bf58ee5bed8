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
  auto list = [this, number = 0](const std::string& content) mutable {
    return "run --tests " + _dir.Write(std::to_string(++number) + "bad.list", content) + " '*'";
  };
  _dir.Write("file", "");
  const struct {
    std::string arguments;
    std::string message;
    int status = 2;
  } rows[] = {
      {"walk", "unknown command 'walk'"},
      {"run '*'", "--tests FILE is missing"},
      {run + "--jobs 0 '*'", "--jobs takes a whole number from 1 on, not '0'"},
      {run + "-xy '*'", "unknown option -x"},
      {run + "'b*'", "'b*' selects none of the 1 tests of "},
      {run + "'a&&b||c'", "'a&&b||c' mixes && and ||"},
      {run + "'a)||(b'", "has a ) without its ("},
      {run + "--results " + _dir / "file/x" + " '*'", "directory " + _dir / "file/x: Not a dir"},
      {run + "--junit " + _dir / "no/directory" + " '*'", "cannot write"},
      {"run --tests " + _dir / "missing" + " '*'", "missing: No such file"},
      {run + "'*' --load '" + control + ";' scott x db", "cannot be given a file named"},
      {load + "scott '$(tiger)' db", "the password is empty or holds characters"},
      {load + "scott env:tiger db", "that holds the password is not set"},
      {load + "scott x 'tiger>f'", "the connection is empty or holds characters"},
      {load + "scott x db --results 'a b'", "a file named 'a b/campaign.csv'"},
      {list("a true\nb\n"), "bad.list:2: test 'b' has no command"},
      {list("a true\nb true\na false\n"), "bad.list:3: test 'a' is listed twice"},
      {list("a sh \"-c exit 1\n"), "command of 'a' has a double quote without its partner"},
      {list("a sh \"-c exit \"1 2\"\n"), "has a double quote without its partner"},
      {list({"a true\0 x\n", 10}), "the command of 'a' has a NUL byte"},
      {list("a\xc2\x9b true\n"), "bad.list:1: a name with control characters cannot be used"},
      {list("a\xe2\x80\xae true\n"), "control characters"},
      {list("../a true\n"), "'../a' cannot be used as a test name"},
      {serve + "65536", "--port takes a whole number from 0 to 65535, not '65536'"},
      {serve + std::to_string(used.GetPort()), "unable to bind server socket"},
      {serve + "0 --token " + _dir.Write("empty", "\n"), "does not hold a token"},
      {serve + "0 --token " + _dir.Path(), ": Is a directory"},
      {serve + "0 --token /proc/self/mem", "cannot read /proc/self/mem: Input/output error"},
      {serve + "0 --token /dev/zero", "does not hold a token"},
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
