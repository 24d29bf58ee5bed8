#include <stdio.h>

#include <chrono>

#include "Commands.h"
#include "Options.h"
#include "Protocol.h"
#include "Report.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

// Sends the request and waits for the results; "" or what went wrong.
std::string Ask(const Options& options, const std::string& token, TASocket& socket,
                std::vector<TestResult>* results) {
  const std::string server = options.host + ":" + std::to_string(options.port);
  const VorString host(options.host);
  const int opened = options.timeout > 0 ? socket.OpenClient(host, options.port, options.timeout)
                                         : socket.OpenClient(host, options.port);
  if (opened != 0) return server + ": " + socket.GetErrMsg();
  VorListValVorString answer;
  socket.SetReadLimits(options.timeout, 0);
  if (socket.PutBlock(VorString(MakeQuery(token, options.expression))) != 0 ||
      socket.GetBlock(answer, options.timeout) != 0) {
    return server + " gave no answer (" + socket.GetErrMsg() +
           "); it may have refused the request or have ended";
  }
  if (!ParseResults(answer, results)) return server + " gave an answer that is none";
  return "";
}

// Receives the output files, which are in the order of the results.
std::string Fetch(const std::string& folder, TASocket& socket, std::vector<TestResult>* results) {
  socket.SetStallLimit(kStallLimit);
  socket.SetReadLimits(0, 0);  // outputs may be of any size
  for (TestResult& result : *results) {
    std::string file = "/dev/null";
    if (!folder.empty()) {
      std::string problem = MakeLogFile(result.name, folder, &file);
      if (!problem.empty()) return problem;
    }
    if (socket.GetFile(VorString(file), kStallLimit) != 0) {
      return "the output of " + result.name + " did not arrive: " + socket.GetErrMsg();
    }
  }
  return "";
}

}  // namespace

int RequestCommand(int argc, char** argv) {
  Options options;
  std::string problem = ParseOptions(Command::kRequest, argc, argv, &options);
  if (!problem.empty()) return Refuse(problem + " (see campaign request --help)");
  if (options.wantsHelp) {
    fputs(HelpFor(Command::kRequest).c_str(), stdout);
    return kAllPassed;
  }
  std::string token;
  problem = LoadToken(options.tokenFile, &token);
  if (!problem.empty()) return Refuse(problem);

  const auto start = std::chrono::steady_clock::now();
  TASocket socket(kSocketBuffer);
  std::vector<TestResult> results;
  problem = Ask(options, token, socket, &results);
  if (!problem.empty()) return Refuse(problem, kNoServer);
  if (results.empty()) return Refuse("'" + options.expression + "' selects no test of the server");
  problem = Fetch(options.outFolder, socket, &results);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  fputs(MakeReport(results, seconds).c_str(), stdout);
  fflush(stdout);
  if (!problem.empty()) return Refuse(problem, kNoServer);
  return AllPassed(results) ? kAllPassed : kSomeFailed;
}

}  // namespace campaign
