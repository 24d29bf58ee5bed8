#include "Campaign.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "Interrupt.h"
#include "Output.h"
#include "Progress.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr int kRefreshMs = 200;    // the longest delay of an interrupt or of the live line
constexpr int kOutputMs = 100;     // the longest delay of output that could not be written at once
constexpr int kMostReapWaits = 5;  // of kRefreshMs, for what was killed

// Makes a log file or empties it.  Returns "" or why that failed.
std::string EmptyLog(const std::string& path) {
  // Non-blocking, so that opening a named pipe without a reader fails instead of waiting.
  const int log = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0666);
  if (log < 0) return "cannot write " + path + ": " + strerror(errno);
  close(log);
  return "";
}

void AppendToLog(const std::string& line, const std::string& path) {
  if (!path.empty()) std::ofstream(path, std::ios::app) << "campaign: " << line << "\n";
}

// Kills all descendants of this process.  Each one is stopped as soon as it is seen, so that it
// cannot start others.  When a pass finds nothing new, all of them are stopped.
void KillDescendants() {
  int self = TAProcess::Getpid();
  TAProcess tree(self);
  VorListValVorString pids;  // this process first
  for (int stopped = 1;;) {
    if (tree.GetProcessTree(pids) != 0) {
      fputs("campaign: cannot read the process table: tests may still be running\n", stderr);
    }
    if (pids.Size() <= stopped) break;
    while (stopped < pids.Size()) kill(atoi(pids[++stopped]), SIGSTOP);
  }
  for (int i = pids.Size(); i > 1; --i) kill(atoi(pids[i]), SIGKILL);
}

// The name of the program that cannot be found or executed.
std::string ProgramOf(const std::string& command, int error) {
  const std::string program = command.substr(0, command.find_first_of(" \t"));
  const bool isScript = error == ENOENT && program.find('/') != std::string::npos &&
                        access(program.c_str(), F_OK) == 0;
  return Printable(isScript ? "the interpreter of " + program : program);
}

void SetNotStarted(const std::string& command, int error, TestResult* result) {
  if (error == ENOENT || error == ENOTDIR) {
    result->outcome = Outcome::kNotFound;
    result->returnCode = kNotFoundCode;
    result->reason = ProgramOf(command, error);
  } else if (error == EACCES || error == ENOEXEC) {
    result->outcome = Outcome::kNotExecutable;
    result->returnCode = kNotExecutableCode;
    result->reason = ProgramOf(command, error);
  } else {
    result->outcome = Outcome::kNotStarted;
    result->returnCode = kNotStartedCode;
    result->reason = strerror(error);
  }
}

// Only a test that is known to have ended with 0 has passed.  \a code is that of the process list.
void SetOutcome(const TAProcessEnd& end, int code, const std::string& command, TestResult* result) {
  result->seconds = end.seconds;
  result->returnCode = code;
  switch (end.kind) {
    case TAProcessEnd::Exited:
      result->outcome = end.code == 0 ? Outcome::kPassed : Outcome::kFailed;
      return;
    case TAProcessEnd::Signalled:
      result->outcome = Outcome::kFailed;
      return;
    case TAProcessEnd::TimedOut:
      result->outcome = Outcome::kTimedOut;
      return;
    case TAProcessEnd::Cancelled:
      result->outcome = Outcome::kInterrupted;
      return;
    case TAProcessEnd::NotStarted:
      SetNotStarted(command, end.code, result);
      return;
    case TAProcessEnd::NotEnded:
    case TAProcessEnd::Lost:
      break;
  }
  result->outcome = Outcome::kLost;
  result->returnCode = kLostCode;
  result->reason = end.Describe();
}

/// Runs tests through one process list.  A test enters the list only when it can start at once:
/// its log is checked just before.
class Runner {
 public:
  Runner(const std::vector<Test>& tests, const Limits& limits,
         const std::vector<std::string>& logFiles, Progress* progress)
      : _tests(tests),
        _limits(limits),
        _progress(progress),
        _list(limits.jobs),
        _results(tests.size()) {
    for (std::size_t i = 0; i < tests.size(); ++i) {
      _results[i].name = tests[i].name;
      if (!logFiles.empty()) _results[i].logFile = logFiles[i];
    }
  }

  std::vector<TestResult> Run() {
    const InterruptDelay untilStopped;
    while (!IsInterrupted() && _progress->IsSeen()) {
      _list.Check();
      TakeEnded();
      StartNext();
      if (_running.empty()) return _results;
      _progress->Show(static_cast<int>(_running.size()));
      _list.WaitForChange(ContinueOutput() ? kOutputMs : kRefreshMs);
    }
    Stop();
    return _results;
  }

 private:
  struct Running {
    std::size_t test;
    int position;  // in _list
  };

  void StartNext() {
    while (_next < _tests.size() && _running.size() < static_cast<std::size_t>(_limits.jobs)) {
      const std::size_t test = _next++;
      TestResult& result = _results[test];
      const std::string log = result.logFile.empty() ? "/dev/null" : result.logFile;
      result.reason = EmptyLog(log);
      if (!result.reason.empty()) {
        result.outcome = Outcome::kNotStarted;
        result.returnCode = kNotStartedCode;
        _progress->Report(result);
        continue;
      }
      const int position =
          _list.Start(VorString(_tests[test].command), _limits.timeout, VorString(log));
      _list.Check();
      _running.push_back({test, position});
    }
  }

  void TakeEnded() {
    std::erase_if(_running, [this](const Running& running) {
      if (_list.GetStatus(running.position) != TAProcessList::Done) return false;
      TestResult& result = _results[running.test];
      const TAProcessEnd end = _list.GetEnd(running.position);
      SetOutcome(end, _list.GetReturnCode(running.position), _tests[running.test].command, &result);
      // The log says why it is empty; a requester sees only that.
      if (end.kind == TAProcessEnd::NotStarted) AppendToLog(Describe(result), result.logFile);
      _progress->Report(result);
      return true;
    });
  }

  void Stop() {
    KillDescendants();
    for (const Running& running : _running) {
      _results[running.test].outcome = Outcome::kInterrupted;
      _results[running.test].seconds = _list.GetEnd(running.position).seconds;
    }
    for (int wait = 0; _list.NRunning() > 0 && wait < kMostReapWaits; ++wait) {
      _list.WaitForChange(kRefreshMs);
      _list.Check();
    }
  }

  const std::vector<Test>& _tests;
  const Limits _limits;
  Progress* const _progress;
  TAProcessList _list;
  std::vector<TestResult> _results;  // by test
  std::vector<Running> _running;
  std::size_t _next = 0;  // the first test that has not started
};

}  // namespace

std::string MakeDirectory(const std::string& directory) {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  return error ? "cannot make the directory " + directory + ": " + error.message() : "";
}

std::string MakeLogFile(const std::string& name, const std::string& directory,
                        std::string* logFile) {
  *logFile = directory + "/" + name + ".log";
  const std::string problem = MakeDirectory(std::filesystem::path(*logFile).parent_path());
  return problem.empty() ? EmptyLog(*logFile) : problem;
}

std::string MakeLogFiles(const std::vector<Test>& tests, const std::string& directory,
                         std::vector<std::string>* logFiles) {
  std::string problem;
  for (std::size_t i = 0; i < tests.size() && problem.empty(); ++i) {
    problem = MakeLogFile(tests[i].name, directory, &logFiles->emplace_back());
  }
  return problem;
}

std::vector<TestResult> RunCampaign(const std::vector<Test>& tests, const Limits& limits,
                                    const std::vector<std::string>& logFiles, Progress* progress) {
  return Runner(tests, limits, logFiles, progress).Run();
}

}  // namespace campaign
