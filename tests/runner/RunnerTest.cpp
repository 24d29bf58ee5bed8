#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "base/VorListValVorString.h"
#include "process/TAProcess.h"
#include "process/TAProcessEnd.h"
#include "process/TAProcessOptions.h"
#include "support/TempDir.h"

using testing::ContainsRegex;
using testing::HasSubstr;

namespace {

// Commands, and the runner in the directory of their logs.
class Runner : public testing::Test {
 protected:
  // Starts it with these commands as its file or, if \a byInput, as its standard input.
  void Start(const char* jobs, const char* seconds, const std::string& commands, bool byInput) {
    const std::string file = _dir.Write("commands", commands);
    VorListValVorString arguments{VOR_RUNNER, jobs, seconds};
    TAProcessOptions options;
    options.SetDirectory(_dir.Path()).SetOutput(_dir / "report");
    if (byInput) {
      options.SetInput(file);
    } else {
      arguments.Append(file);
    }
    ASSERT_EQ(_runner.Start(arguments, options), 0) << _runner.GetErrMsg();
  }

  TAProcessEnd End() {
    int status;
    _runner.Wait(status);
    return _runner.GetEnd();
  }

  std::string Report() const { return _dir.Read("report"); }

  TempDir _dir;
  TAProcess _runner;
};

}  // namespace

TEST_F(Runner, PassesIfAllPass) {
  Start("2", "60", "echo one\nsh -c \"cat; echo two >&2\"", true);
  EXPECT_EQ(End().code, 0) << Report();
  EXPECT_EQ(_dir.Read("line1.log"), "one\n");
  EXPECT_EQ(_dir.Read("line2.log"), "two\n");
}

TEST_F(Runner, ShowsHowEachEnded) {
  mkdir((_dir / "line6.log").c_str(), 0700);
  Start("10", "1",
        "true\nsh -c \"exit 3\"\nsh -c \"kill -9 $$\"\nsleep 1000\n/no/such/program\ntrue\n"
        "sh -c \"setsid sleep 1000 & setsid sleep 1000 & exit 0\"\n",
        false);
  EXPECT_EQ(End().code, 1);
  for (const char* line : {
           "line1.log: exit 0, 0.[0-9]+ s, [0-9]+ KiB, left behind: 0\n",
           "line2.log: exit 3, ",
           "line3.log: killed by SIGKILL, ",
           "line4.log: timed out after 1 s, 1.[0-9]+ s, ",
           "line5.log: could not start: No such file or directory, ",
           "line6.log: could not start: output line6.log: Is a directory, ",
           "line7.log: exit 0, .* left behind: 2\n",
       }) {
    EXPECT_THAT(Report(), ContainsRegex(line));
  }
}

TEST_F(Runner, LeavesNobodyWhenInterrupted) {
  const std::string path = _dir / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  // All that the first command starts holds the pipe open.
  Start("1", "600",
        "sh -c \"trap '' TERM; exec 3>pipe; setsid sh -c 'sleep 1000 & sleep 1000' & "
        "sleep 1000 & echo >&3; wait\"\necho never\n",
        false);
  const int pipe = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  char byte;
  ASSERT_EQ(read(pipe, &byte, 1), 1);
  kill(_runner.ChildPid(), SIGINT);
  EXPECT_EQ(End().code, 1);
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  EXPECT_EQ(read(pipe, &byte, 1), 0) << "somebody still holds the pipe";
  close(pipe);
  EXPECT_THAT(Report(), HasSubstr("line1.log: cancelled, "));
  EXPECT_THAT(Report(), HasSubstr("line2.log: cancelled, 0.00 s"));
}
