#include "process/TAProcessOptions.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "base/VorListValVorString.h"
#include "foundation/Tracing.h"
#include "process/TAProcess.h"
#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

using Options = TAProcessOptions;

constexpr int kLongMs = 60'000;

VorListValVorString Shell(const std::string& script) {
  return {"sh", "-c", VorString(script)};
}

// The output of a command that passes; of another one how it ended.
std::string OutputOf(const VorListValVorString& arguments, const Options& options) {
  VorString output;
  TAProcessEnd end;
  TAProcess().Run(arguments, options, output, end, kLongMs);
  const bool hasPassed = end.kind == TAProcessEnd::Exited && end.code == 0;
  return (hasPassed ? output : end.Describe()).CastToCharPtr();
}

std::string OutputOf(const std::string& script, const Options& options) {
  return OutputOf(Shell(script), options);
}

}  // namespace

TEST(TAProcessOptions, TheChildSeesEachSetting) {
  const std::string groups = "set -- $(cat /proc/$$/stat); echo $(($5 == $$)) $(($6 == $$))";
  const TempDir dir;
  const struct {
    Options options;
    std::string script;
    std::string output;
  } rows[] = {
      {Options(), groups, "0 0\n"},
      {Options().SetGroup(Options::OwnGroup), groups, "1 0\n"},
      {Options().SetGroup(Options::OwnSession), groups, "1 1\n"},
      {Options().SetDirectory(VorString(dir.Path())), "pwd", dir.Path() + "\n"},
      {Options().SetInput(VorString(dir.Write("in", "read"))), "cat", "read"},
      {Options().SetInput("/dev/null"), "cat", ""},
      {Options().SetNiceness(1000), "nice", "19\n"},
      {Options().SetLimit(Options::ProcessorSeconds, 7), "ulimit -St; ulimit -Ht", "7\n8\n"},
      {Options().SetLimit(Options::MemoryBytes, 1 << 30), "ulimit -v", "1048576\n"},
      {Options().SetLimit(Options::FileSizeBytes, 1024), "ulimit -f", "2\n"},
      {Options().SetLimit(Options::OpenFiles, 64), "ulimit -n", "64\n"},
      {Options().SetLimit(Options::CoreBytes, 0), "ulimit -c", "0\n"},
      {Options().SetLimit(Options::Processes, 999), "ulimit -p", "999\n"},
      {Options().SetLimit(Options::OpenFiles, 1).SetLimit(Options::OpenFiles, -1), "echo", "\n"}};
  for (const auto& [options, script, output] : rows) EXPECT_EQ(OutputOf(script, options), output);
  const VorString both(dir / "both"), sameFile(dir / "./both");
  EXPECT_EQ(OutputOf("echo out; echo err >&2",
                     Options().SetErrorOutput("/no/file").SetFilesRequired(false)),
            "out\nerr\n");
  OutputOf("echo out; echo err >&2", Options().SetOutput(both).SetErrorOutput(sameFile));
  EXPECT_EQ(dir.Read("both"), "out\nerr\n");
  EXPECT_EQ(OutputOf({"printf", "<%s>", "a  b", "\"c", "", "*"}, Options()), "<a  b><\"c><><*>");
  Options copy = Options().SetNiceness(3);
  const Options original = copy;
  copy.SetNiceness(4);
  EXPECT_EQ(OutputOf("nice", original), "3\n");
}

TEST(TAProcessOptions, ChangesTheEnvironmentInTheOrderOfTheCalls) {
  const TempDir dir;
  chmod(dir.Write("bin/tool", "#!/bin/sh\necho \"$PATH\"").c_str(), 0755);
  const VorString path(dir / "bin");
  const Options empty = Options().UnsetAllVariables();
  const struct {
    Options options;
    const char* program;
    std::string output;
  } rows[] = {
      {empty, "env", ""},
      {Options(empty).SetVariable("A", "1").SetVariable("A", "x=2"), "env", "A=x=2\n"},
      {Options().SetVariable("A", "1").UnsetAllVariables().SetVariable("B", ""), "env", "B=\n"},
      {Options(empty).SetVariable("A", "1").SetVariable("AB", "2").UnsetVariable("A"), "env",
       "AB=2\n"},
      {Options().SetVariable("PATH", path), "tool", (dir / "bin") + "\n"},
      {Options().SetVariable("PATH", path), "env", "could not start: No such file or directory"},
      {Options(empty).SetVariable("PATH", path).UnsetVariable("PATH"), "env", ""}};
  for (const auto& [options, program, output] : rows) {
    EXPECT_EQ(OutputOf(VorListValVorString{program}, options), output);
  }
  setenv("VOR_TEST_INHERITED", "yes", 1);
  EXPECT_EQ(OutputOf("echo $VOR_TEST_INHERITED $A", Options().SetVariable("A", "too")),
            "yes too\n");
  unsetenv("VOR_TEST_INHERITED");
}

TEST(TAProcessOptions, OpensFilesFromTheOldDirectory) {
  const TempDir dir;
  chmod(dir.Write("sub/tool", "#!/bin/sh\necho out; echo err >&2").c_str(), 0755);
  const VorListValVorString tool = {"./tool"};
  EXPECT_EQ(InProcess([&] {
              if (chdir(dir.Path().c_str()) != 0) return 1;
              Options options = Options().SetDirectory("sub").SetOutput("both");
              std::string collected = OutputOf(tool, options);
              options.SetAppend(true);
              collected += OutputOf(tool, options.SetErrorOutput("both"));
              collected += OutputOf(tool, options.SetErrorOutput("err").SetOutput("out"));
              collected += OutputOf(tool, options.SetAppend(false));
              collected += OutputOf(tool, Options(options).SetOutput(""));
              return collected == "out\n" ? 0 : 2;
            }),
            0);
  EXPECT_EQ(dir.Read("both"), "out\nerr\nout\nerr\n");
  EXPECT_EQ(dir.Read("out"), "out\n");
  EXPECT_EQ(dir.Read("err"), "err\n");
}

TEST(TAProcessOptions, NamesWhatCannotBeApplied) {
  const TempDir dir;
  const std::string nul("a\0b", 3);
  const std::string data = dir.Write("data", "");
  mkfifo((dir / "pipe").c_str(), 0600);
  const int pipe = open((dir / "pipe").c_str(), O_RDWR | O_CLOEXEC);
  const struct {
    VorListValVorString arguments;
    Options options;
    std::string reason;
  } rows[] = {
      {{"no-such-program"}, Options(), "No such file or directory"},
      {{""}, Options(), "No such file or directory"},
      {{VorString(data)}, Options(), "Permission denied"},
      {{}, Options(), "empty command: Invalid argument"},
      {{"echo", VorString(nul)}, Options(), "argument a: Invalid argument"},
      {{"true"}, Options().SetVariable("A=B", ""), "variable A=B: Invalid argument"},
      {{"true"}, Options().UnsetVariable(""), "variable : Invalid argument"},
      {{"true"}, Options().SetVariable("A", VorString(nul)), "variable A: Invalid argument"},
      {{"true"}, Options().SetInput(VorString(nul)), "input a: Invalid argument"},
      {{"true"}, Options().SetDirectory("/x y"), "directory /x y: No such file or directory"},
      {{"true"},
       Options().SetDirectory(VorString(data)),
       "directory " + data + ": Not a directory"},
      {{"true"}, Options().SetInput("/x/i"), "input /x/i: No such file or directory"},
      {{"true"}, Options().SetOutput("/x/o"), "output /x/o: No such file or directory"},
      {{"true"}, Options().SetErrorOutput("/x/e"), "error output /x/e: No such file or directory"}};
  for (const auto& [arguments, options, reason] : rows) {
    TAProcess process;
    const std::string program = arguments.Size() == 0 ? "" : arguments[1].CastToCharPtr();
    EXPECT_EQ(process.Start(arguments, options), 1) << reason;
    EXPECT_EQ(process.ChildPid(), 0) << reason;
    EXPECT_EQ(process.GetEnd().Describe(), "could not start: " + reason);
    EXPECT_EQ(process.GetErrMsg(),
              "Unable to start " + (program.empty() ? "a command" : program) + ": " + reason);
  }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was not reaped";

  // The start does not wait for one that opens a named pipe, so it may return either.
  TAProcess late;
  int status;
  late.Start("true", Options().SetInput(VorString(dir / "pipe")).SetDirectory("/x"));
  late.Wait(status);
  EXPECT_EQ(late.GetEnd().object, "directory /x");
  EXPECT_EQ(
      OutputOf("echo x", Options().SetOutput("/x/o").SetInput("/x/i").SetFilesRequired(false)),
      "x\n");
  close(pipe);
}

TEST(TAProcessOptions, NamesWhatNeedsPrivileges) {
  EXPECT_EQ(InProcess([] {
              const rlimit files = {100, 100};
              setrlimit(RLIMIT_NOFILE, &files);
              if (getuid() == 0 && setuid(65534) != 0) return 1;
              TAProcess process;
              if (process.Start("true", Options().SetNiceness(-5)) != 1) return 2;
              if (process.GetEnd().object != "niceness -5") return 3;
              process.Start("true", Options().SetLimit(Options::OpenFiles, 101));
              if (process.GetEnd().object != "limit of open files 101") return 4;
              return process.Start("true", Options().SetLimit(Options::OpenFiles, 100));
            }),
            0);
}

TEST(TAProcessOptions, LimitsEndTheCommand) {
  const TempDir dir;
  const std::string write = "exec head -c 4096 /dev/zero >" + (dir / "file");
  const Options noCore = Options().SetLimit(Options::CoreBytes, 0);
  EXPECT_EQ(OutputOf(write, Options(noCore).SetLimit(Options::FileSizeBytes, 1024)),
            "killed by SIGXFSZ");
  EXPECT_EQ(OutputOf("exec dd if=/dev/zero of=/dev/null bs=1G count=1",
                     Options().SetLimit(Options::MemoryBytes, 256 << 20)),
            "exit 1");
  TAProcess process;
  int status;
  process.Start(Shell("while :; do :; done"),
                Options(noCore).SetLimit(Options::ProcessorSeconds, 1));
  process.Wait(status);
  const TAProcessEnd end = process.GetEnd();
  EXPECT_EQ(end.Describe(), "killed by SIGXCPU");
  EXPECT_GT(end.userSeconds, 0.1);  // the limit is counted otherwise
  EXPECT_GE(end.seconds, 0.9);
  EXPECT_GT(end.peakMemoryKiB, 100);
}

TEST(TAProcess, RunCollectsTheOutput) {
  const std::string zeros = "head -c 1000000 /dev/zero";
  const struct {
    std::string script;
    int limitMs;
    std::size_t maxBytes;
    int result;
    std::size_t size;
    const char* end;
  } rows[] = {{zeros, kLongMs, SIZE_MAX, 0, 1'000'000, "exit 0"},
              {zeros, kLongMs, 1'000'000, 0, 1'000'000, "exit 0"},
              {zeros + "; exit 5", kLongMs, 999'999, 2, 999'999, "exit 5"},
              {"echo; echo >&2; kill -9 $$", 0, 2, 0, 2, "killed by SIGKILL"},
              {"exec >&- 2>&-; sleep 0.1; exit 3", 0, 0, 0, 0, "exit 3"},
              {"sleep 100 | sleep 100", 100, 0, 0, 0, "timed out after 0."}};
  for (const auto& [script, limitMs, maxBytes, result, size, howEnded] : rows) {
    TAProcess process;
    VorString output = "before";
    TAProcessEnd end;
    EXPECT_EQ(process.Run(Shell(script), Options(), output, end, limitMs, maxBytes), result)
        << script;
    EXPECT_EQ(output.View().size(), size) << script;
    EXPECT_THAT(end.Describe().CastToCharPtr(), testing::StartsWith(howEnded)) << script;
  }
}

// It would wait until the limit otherwise.
TEST(TAProcess, RunDoesNotWaitForWhatHoldsThePipe) {
  for (const bool leavesNobody : {false, true}) {
    TAProcess process;
    VorString output;
    TAProcessEnd end;
    process.SetContainment(TAContainment::Group);
    process.SetLeavesNobody(leavesNobody);
    process.Run(Shell("sleep 1000 & echo $!"), Options(), output, end, kLongMs);
    EXPECT_EQ(end.Describe(), "exit 0");
    EXPECT_EQ(end.leftBehind, leavesNobody ? 1 : 0);
    if (!leavesNobody) {
      EXPECT_EQ(kill(atoi(output), SIGKILL), 0);
    }
  }
}

TEST(TAProcess, RunWorksUnderSignalsAndWithFewDescriptors) {
  EXPECT_EQ(InProcess([] {
              struct sigaction action = {};
              action.sa_handler = [](int) {};
              sigaction(SIGALRM, &action, nullptr);
              const itimerval often = {{0, 2000}, {0, 2000}};
              setitimer(ITIMER_REAL, &often, nullptr);
              if (OutputOf("sleep 0.2; echo x", Options()) != "x\n") return 1;
              const rlimit few = {40, 40};
              setrlimit(RLIMIT_NOFILE, &few);
              while (open("/dev/null", O_RDONLY) >= 0) continue;
              const std::string none = OutputOf("echo x", Options());
              if (none != "could not start: pipe for the output: Too many open files") return 2;
              close_range(38, 39, 0);  // for the pipe alone
              return OutputOf("sleep 0.1; echo x", Options()) == "x\n" ? 0 : 3;
            }),
            0);
}
