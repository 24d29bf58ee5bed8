#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <iostream>

#include "Campaign.h"
#include "Commands.h"
#include "Followup.h"
#include "Interrupt.h"
#include "Options.h"
#include "Progress.h"
#include "Protocol.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr int kAcceptSeconds = 1;  // how long an interrupt may have to wait for the next request

/// The folder of the output files: the one that is asked for, or one that goes away again.
class ResultsFolder {
 public:
  explicit ResultsFolder(const std::string& wanted) : _path(wanted) {
    if (!wanted.empty()) return;
    std::error_code ignored;
    _path = std::filesystem::temp_directory_path(ignored) / "campaign_XXXXXX";
    _isOwn = mkdtemp(_path.data()) != nullptr;
    if (!_isOwn) _problem = "cannot make " + _path + ": " + strerror(errno);
  }
  ResultsFolder(const ResultsFolder&) = delete;
  ResultsFolder& operator=(const ResultsFolder&) = delete;
  ~ResultsFolder() {
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
      return Refuse("port " + std::to_string(_options.port) + ": " + _socket.GetErrMsg());
    }
    CatchInterrupts();
    printf("serving %zu tests on port %d\n", _tests.size(), _socket.GetPort());
    fflush(stdout);
    int served = 0;
    while (!IsInterrupted() && (_options.requests == 0 || served < _options.requests)) {
      TASocket peer(kSocketBuffer);
      peer.SetPerfo(&_received, &_sent);
      peer.SetStallLimit(kStallLimit);
      peer.SetReadLimits(kQuerySeconds, kQueryBytes);
      VorString query;
      const int result = _socket.GetQuery(kQuerySeconds, query, peer, kAcceptSeconds);
      if (result == 2) continue;
      if (result != 0 && !peer.IsOpen()) return Refuse(_socket.GetErrMsg());
      ++served;
      _requests.Count(1);
      const std::string problem = result != 0 ? peer.GetErrMsg() : Answer(query, peer);
      if (!problem.empty()) printf("request failed: %s\n", problem.c_str());
      TAPerfo::GlobalReport(std::cout);
      std::cout.flush();
    }
    return IsInterrupted() ? kSomeFailed : kAllPassed;
  }

 private:
  // Serves one request; "" or why it failed, which concerns this one only.
  std::string Answer(const VorString& query, TASocket& peer) {
    std::string expression;
    if (!TakeExpression(std::string(query.View()), _token, &expression)) {
      return "refused, it does not carry the token";
    }
    const std::vector<Test> selected = SelectTests(_tests, expression);
    printf("request for %zu tests\n", selected.size());
    fflush(stdout);
    if (!FitsAnswer(selected)) return "refused, the results are more than an answer can hold";
    const ResultsFolder folder(_options.resultsFolder);
    std::vector<std::string> logFiles;
    std::string problem = folder.Problem();
    if (problem.empty()) problem = MakeLogFiles(selected, folder.Path(), &logFiles);
    if (!problem.empty()) return problem;

    Progress progress(static_cast<int>(selected.size()));
    std::vector<TestResult> results;
    if (!selected.empty()) {
      results = RunCampaign(selected, _options.GetLimits(), logFiles, &progress);
    }
    progress.Finish();
    if (IsInterrupted()) return "interrupted";
    _testsRun.Count(static_cast<int>(results.size()));
    const std::string followupProblem = _followup.Apply(results);
    if (!followupProblem.empty()) printf("%s\n", followupProblem.c_str());

    VorListValVorString answer;
    ListResults(results, &answer);
    if (peer.PutBlock(answer) != 0) return peer.GetErrMsg();
    for (const TestResult& result : results) {
      if (peer.PutFile(VorString(result.logFile)) != 0) return peer.GetErrMsg();
    }
    return peer.Flush() == 0 ? "" : peer.GetErrMsg();
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
    fputs(HelpFor(Command::kServe).c_str(), stdout);
    return kAllPassed;
  }
  std::vector<Test> tests;
  std::string token;
  problem = LoadTestList(options.testList, &tests);
  if (problem.empty()) problem = LoadToken(options.tokenFile, &token);
  Followup followup;
  if (problem.empty()) problem = followup.Prepare(options);
  if (!problem.empty()) return Refuse(problem);
  return Server(options, followup, std::move(tests), std::move(token)).Run();
}

}  // namespace campaign
