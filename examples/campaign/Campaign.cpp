#include "Campaign.h"

#include <signal.h>
#include <stdlib.h>
#include <string.h>

#include <cerrno>
#include <chrono>
#include <fstream>

#include "Interrupt.h"
#include "Progress.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTimeoutCode = 99;  // TAProcessList's return code after a time-out
constexpr int kRefreshMs = 200;   // how long an interrupt or the live line may have to wait

// The states that TAProcessList::GetStatus tells.
constexpr int kWaiting = 0;
constexpr int kDone = 2;

/// Follows the tests through one process list, which tells states but no times.
class Runner {
 public:
  Runner(const std::vector<Test>& tests, const Limits& limits,
         const std::vector<std::string>& logFiles)
      : _limits(limits), _list(limits.jobs), _results(tests.size()), _starts(tests.size()) {
    for (std::size_t i = 0; i < tests.size(); ++i) {
      _results[i].name = tests[i].name;
      if (!logFiles.empty()) _results[i].logFile = logFiles[i];
    }
    // The list starts what was added last first: added backwards, tests start in their order.
    for (std::size_t i = tests.size(); i-- > 0;) {
      _list.Start(VorString(tests[i].command), limits.timeout,
                  logFiles.empty() ? "/dev/null" : VorString(logFiles[i]));
    }
  }

  std::vector<TestResult> Run(Progress* progress) {
    while (!IsInterrupted()) {
      const Clock::time_point beforeCheck = Clock::now();
      _list.Check();
      FollowStates(beforeCheck, progress);
      if (_list.NDone() == _list.Size()) break;
      progress->Show(_list.NRunning());
      _list.WaitForChange(kRefreshMs);
    }
    if (!_running.empty()) Interrupt();
    return _results;
  }

 private:
  int Position(std::size_t test) const { return static_cast<int>(_results.size() - test); }

  double SecondsSinceStart(std::size_t test) const {
    return std::chrono::duration<double>(Clock::now() - _starts[test]).count();
  }

  // Looks only at what runs and at what starts next, so that a long list costs nothing.  A test
  // that was started since startTime counts from there, so that none seems shorter than it was.
  void FollowStates(Clock::time_point startTime, Progress* progress) {
    while (_next < _results.size() && _list.GetStatus(Position(_next)) != kWaiting) {
      _starts[_next] = startTime;
      _running.push_back(_next++);
    }
    std::erase_if(_running, [this, progress](std::size_t test) {
      if (_list.GetStatus(Position(test)) != kDone) return false;
      Finish(test);
      progress->Report(_results[test]);
      return true;
    });
  }

  void Finish(std::size_t test) {
    TestResult& result = _results[test];
    result.returnCode = _list.GetReturnCode(Position(test));
    result.seconds = SecondsSinceStart(test);
    // A test may end with 99 by itself; only one that used up its time was killed for it.
    const bool usedItsTime = _limits.timeout > 0 && result.seconds >= _limits.timeout;
    result.outcome = result.returnCode == 0                             ? Outcome::kPassed
                     : result.returnCode == kTimeoutCode && usedItsTime ? Outcome::kTimedOut
                                                                        : Outcome::kFailed;
  }

  // Kills whatever descends from this process; a second round finds what the first one missed.
  void Interrupt() {
    int self = TAProcess::Getpid();
    TAProcess tree(self);
    for (int round = 0; round < 2; ++round) {
      VorListValVorString pids;
      for (int known = -1; known != pids.Size();) {
        known = pids.Size();
        tree.GetProcessTree(pids);
      }
      for (int i = pids.Size(); i >= 1; --i) {
        const int pid = atoi(pids[i]);
        if (pid != self) kill(pid, SIGKILL);
      }
    }
    for (const std::size_t test : _running) {
      _results[test].outcome = Outcome::kInterrupted;
      _results[test].seconds = SecondsSinceStart(test);
    }
  }

  const Limits _limits;
  TAProcessList _list;
  std::vector<TestResult> _results;
  std::vector<Clock::time_point> _starts;
  std::vector<std::size_t> _running;  // indexes into _results
  std::size_t _next = 0;              // the first test that was not seen running yet
};

}  // namespace

std::string MakeLogFile(const std::string& name, const std::string& folder, std::string* logFile) {
  *logFile = folder + "/" + name + ".log";
  TAFileName parent = TAFileName(logFile->c_str()).dirname(1);
  errno = 0;
  if (!parent.IsNull() && parent.CreateRecursiveDirectory() != 0 && !parent.IsDirectory()) {
    return "cannot make the folder " + std::string(parent) + ": " + strerror(errno);
  }
  return std::ofstream(*logFile) ? "" : "cannot write " + *logFile + ": " + strerror(errno);
}

std::string MakeLogFiles(const std::vector<Test>& tests, const std::string& folder,
                         std::vector<std::string>* logFiles) {
  std::string problem;
  for (std::size_t i = 0; i < tests.size() && problem.empty(); ++i) {
    problem = MakeLogFile(tests[i].name, folder, &logFiles->emplace_back());
  }
  return problem;
}

std::vector<TestResult> RunCampaign(const std::vector<Test>& tests, const Limits& limits,
                                    const std::vector<std::string>& logFiles, Progress* progress) {
  return Runner(tests, limits, logFiles).Run(progress);
}

}  // namespace campaign
