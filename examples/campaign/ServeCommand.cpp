#include <errno.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <sstream>

#include "Campaign.h"
#include "Commands.h"
#include "Followup.h"
#include "InputFile.h"
#include "Interrupt.h"
#include "Options.h"
#include "Output.h"
#include "Progress.h"
#include "Protocol.h"
#include "Startup.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr int kAcceptSeconds = 1;  // the longest delay of an interrupt between requests

// Limits of sending the results or the output of one test.  An interrupt does not stop a send that
// has begun: it takes effect at the end of the send.
constexpr int kSendSeconds = 300;
constexpr int kLeastRate = 16 * 1024;  // bytes per second

// Whether an accept failed for want of something that others may release soon.
bool IsShortage(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

/// The directory of the output files: the wanted one, or a temporary one.
class ResultsDirectory {
 public:
  explicit ResultsDirectory(const std::string& wanted) : _path(wanted) {
    if (!wanted.empty()) return;
    std::error_code ignored;
    _path = std::filesystem::temp_directory_path(ignored) / "campaign_XXXXXX";
    _isOwn = mkdtemp(_path.data()) != nullptr;
    if (!_isOwn) _problem = "cannot make the directory " + _path + ": " + strerror(errno);
  }
  ResultsDirectory(const ResultsDirectory&) = delete;
  ResultsDirectory& operator=(const ResultsDirectory&) = delete;
  ~ResultsDirectory() {
    std::error_code ignored;
    if (_isOwn) std::filesystem::remove_all(_path, ignored);
  }

  const std::string& Path() const { return _path; }
  /// "", or why there is none.
  const std::string& Problem() const { return _problem; }

 private:
  std::string _path;
  std::string _problem;
  bool _isOwn = false;
};

class Server {
 public:
  Server(const Options& options, const Followup& followup, std::vector<Test> tests,
         std::string token)
      : _options(options),
        _followup(followup),
        _tests(std::move(tests)),
        _token(std::move(token)) {}

  int Run() {
    if (_socket.OpenServer(_options.port) != 0) {
      return Refuse("port " + std::to_string(_options.port) + ": " + Reason(_socket));
    }
    CatchInterrupts();
    Print("serving " + std::to_string(_tests.size()) + " tests on port " +
          std::to_string(_socket.GetPort()) + "\n");
    int served = 0;
    while (!IsInterrupted() && (_options.requests == 0 || served < _options.requests)) {
      TASocket peer(kSocketBuffer);
      peer.SetPerfo(&_received, &_sent);
      peer.SetStallLimit(kStallLimit);
      peer.SetReadLimits(kQuerySeconds, kQueryBytes);
      peer.SetWriteLimits(kSendSeconds, kLeastRate);
      VorString query;
      const int result = _socket.GetQuery(kQuerySeconds, query, peer, kAcceptSeconds);
      if (result == 2) {
        ContinueOutput();
        continue;
      }
      if (result != 0 && !peer.IsOpen()) {
        if (!IsShortage(_socket.GetErrno())) return Refuse(Reason(_socket));
        Print("cannot accept a request yet: " + Reason(_socket) + "\n");
        FinishOutput();
        poll(nullptr, 0, kAcceptSeconds * 1000);  // an interrupt ends it
        continue;
      }
      ++served;
      _requests.Count(1);
      const std::string problem = result != 0 ? Reason(peer) : Answer(query, peer);
      if (!problem.empty()) Print("request failed: " + problem + "\n");
      std::ostringstream counters;
      TAPerfo::GlobalReport(counters);
      Print(counters.str());
      FinishOutput();  // a log that nobody reads must not grow without limit
    }
    return IsInterrupted() ? kSomeFailed : kAllPassed;
  }

 private:
  // Serves one request.  Returns "" or why it failed, which does not end the server.
  std::string Answer(const VorString& query, TASocket& peer) {
    std::string expression;
    if (!TakeExpression(std::string(query.View()), _token, &expression)) {
      return "it does not carry the token";
    }
    const std::vector<Test> selected = SelectTests(_tests, expression);
    Print("request for " + std::to_string(selected.size()) + " tests\n");
    if (!FitsAnswer(selected)) return "its results could exceed the largest answer";
    const ResultsDirectory directory(_options.resultsDirectory);
    std::vector<std::string> logFiles;
    std::string problem = directory.Problem();
    if (problem.empty()) problem = MakeLogFiles(selected, directory.Path(), &logFiles);
    if (!problem.empty()) return problem;

    Progress progress(static_cast<int>(selected.size()), Watcher::kRequester);
    std::vector<TestResult> results;
    if (!selected.empty()) {
      results = RunCampaign(selected, _options.GetLimits(), logFiles, &progress);
    }
    progress.Finish();
    if (IsInterrupted()) return "interrupted";
    _testsRun.Count(static_cast<int>(results.size()));
    const std::string followupProblem = _followup.Apply(results);
    if (!followupProblem.empty()) Print(followupProblem + "\n");

    VorListValVorString answer;
    ListResults(results, &answer);
    if (peer.PutBlock(answer) != 0) return Reason(peer);
    for (const TestResult& result : results) {
      if (IsInterrupted()) return "interrupted";
      // A log that is missing, or that a test has replaced by a pipe, must not prevent the transfer
      // of the others.
      const bool hasLog = RegularFile(result.logFile).IsOpen();
      if (peer.PutFile(VorString(hasLog ? result.logFile : "/dev/null")) != 0) {
        return Reason(peer);
      }
    }
    return peer.Flush() == 0 ? "" : Reason(peer);
  }

  const Options _options;
  const Followup& _followup;
  const std::vector<Test> _tests;
  const std::string _token;
  TASocket _socket;
  TAPerfo _testsRun{"tests run"};
  TAPerfoLoad _sent{"bytes sent"};
  TAPerfo _received{"bytes received"};
  TAPerfoAv _requests{"requests"};
};

}  // namespace

int ServeCommand(int argc, char** argv) {
  Options options;
  std::string problem = ParseOptions(Command::kServe, argc, argv, &options);
  if (!problem.empty()) return Refuse(problem + " (see campaign serve --help)");
  if (options.wantsHelp) {
    Print(HelpFor(Command::kServe));
    return kAllPassed;
  }
  std::vector<Test> tests;
  std::string token;
  problem = LoadTestList(options.testList, &tests);
  if (problem.empty()) problem = LoadToken(options.tokenFile, &token);
  Followup followup;
  if (problem.empty()) problem = followup.Prepare(options);
  if (problem.empty()) problem = DetachInput();
  if (!problem.empty()) return Refuse(problem);
  return Server(options, followup, std::move(tests), std::move(token)).Run();
}

}  // namespace campaign
