#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "campaign/RunTool.h"

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

// A test list, and a loader that notes what it gets and ends with the status of the file "status".
class CampaignFollowup : public CampaignTest {
 protected:
  CampaignFollowup() {
    const std::string loader = _dir.Write(
        "bin/sqlldr", "#!/bin/sh\nd=" + _dir.Path() +
                          "\nprintf '%s\\n' \"$@\" > $d/arguments\ncp \"${3#data=}\" $d/loaded\n"
                          "test -z \"$SECRET\" || touch $d/secret\nexit $(cat $d/status)\n");
    std::filesystem::permissions(loader, std::filesystem::perms::owner_all);
    _dir.Write("status", "0");
    _dir.Write("load.ctl", "");
    _dir.Write("org", "Some Team Name.ab.\nOther Team.xyz.\n");
    _dir.Write("kvr",
               "a b c d Fw:net Resp:ab\na b c 1234567net Mod:tcp Resp:xyz\n"
               "a b c d Fw:gone Resp:zz\n");
  }

  Outcome Run(const std::string& options) {
    return Campaign("run --jobs 1 --tests " + _dir / "tests.list" + " " + options + " '*'",
                    "SECRET=tiger PATH=" + _dir / "bin" + ":$PATH ");
  }
};

}  // namespace

TEST_F(CampaignFollowup, ListsFailuresByResponsible) {
  _dir.Write("tests.list",
             "alone false\nnet/udp false\nnet/tcp false\nnet/ip true\nnet/tcp/slow sh -c \"exit "
             "3\"\nno/body false\ngone/x false\n");
  const std::string owners = "--owners " + _dir / "org" + " ";
  const Outcome run = Run(owners + _dir / "kvr");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("\n\nfailures by responsible\n\n"
                                    "AB  Some Team Name.ab.\n"
                                    "  net/udp: failed (1)\n"
                                    "  net/tcp/slow: failed (3)\n"
                                    "XYZ  Other Team.xyz.\n"
                                    "  net/tcp: failed (1)\n"
                                    "ZZ  (not in the organisation file)\n"
                                    "  gone/x: failed (1)\n"
                                    "nobody known\n"
                                    "  alone: failed (1)\n"
                                    "  no/body: failed (1)\n"));
}

TEST_F(CampaignFollowup, LoadsResultsIntoTheDatabase) {
  const std::string tests = Tests("net/tcp true\nsay\"hi\" sh -c \"test -z $SECRET; exit 4\"\n");
  _dir.Write("password", "ti=ger\nsecond line\n");
  const std::string control = "--load " + _dir / "load.ctl" + " scott ";

  const Outcome run = Run(control + "env:SECRET db --results " + _dir / "out" + " --owners " +
                          _dir / "org" + " " + _dir / "kvr");
  EXPECT_EQ(run.status, 1) << run.output;
  EXPECT_EQ(_dir.Read("arguments"), "userid=scott/tiger@db\ncontrol=" + _dir / "load.ctl" +
                                        "\ndata=" + _dir / "out/campaign.csv" + "\n");
  EXPECT_THAT(_dir.Read("loaded"),
              MatchesRegex("\"net/tcp\",passed,0,[0-9]+\\.[0-9]{3},\"XYZ\"\n"
                           "\"say\"\"hi\"\"\",failed,4,[0-9]+\\.[0-9]{3},\"\"\n"));
  EXPECT_EQ(_dir.Read("out/campaign.csv"), _dir.Read("loaded"));
  EXPECT_FALSE(Exists("secret")) << "children see the password";

  EXPECT_THAT(Campaign("run '*' " + tests + control + "x db", "TMPDIR=/proc ").output,
              StartsWith("campaign: cannot write /proc/campaign_"));
  _dir.Write("status", "3");
  const Outcome failed = Run(control + "file:" + _dir / "password" + " //host:1521/db");
  EXPECT_EQ(failed.status, 2);
  EXPECT_THAT(failed.output, HasSubstr("the database loader sqlldr failed: exit status 3\n"));
  EXPECT_THAT(_dir.Read("arguments"), HasSubstr("userid=scott/ti=ger@//host:1521/db\n"));
  std::string data = _dir.Read("arguments");
  data = data.substr(data.find("data=") + 5);
  data.pop_back();
  EXPECT_NE(access(data.c_str(), F_OK), 0) << "temporary, so removed";
}
