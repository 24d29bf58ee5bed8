#include <chrono>

#include "Commands.h"
#include "Options.h"
#include "Output.h"
#include "Protocol.h"
#include "Report.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

// Sends the request and waits for the results.  Returns "" or one line that says what failed.
std::string Ask(const Options& options, const std::string& token, TASocket& socket,
                std::vector<TestResult>* results) {
  const std::string server = options.host + ":" + std::to_string(options.port);
  const VorString host(options.host);
  const int opened = options.timeout > 0 ? socket.OpenClient(host, options.port, options.timeout)
                                         : socket.OpenClient(host, options.port);
  if (opened != 0) return server + ": " + Reason(socket);
  VorListValVorString answer;
  socket.SetReadLimits(options.timeout, 0);
  int result = socket.PutBlock(VorString(MakeQuery(token, options.expression)));
  if (result == 0) result = socket.GetBlock(answer, options.timeout);
  if (result == 2) {
    return server + " sent no results within " + std::to_string(options.timeout) +
           " s: allow more time with --timeout";
  }
  if (result != 0) {
    return server + " sent no results (" + Reason(socket) +
           "): it refused the request or ended; its own output shows the reason";
  }
  if (ParseResults(answer, results)) return "";
  return server + " sent something other than results: is it a campaign server of this version?";
}

// Receives the output files, which come in the order of the results.  Returns "" or what failed,
// and then sets \a status to the exit status.
std::string Fetch(const std::string& directory, TASocket& socket, std::vector<TestResult>* results,
                  int* status) {
  socket.SetStallLimit(kStallLimit);
  socket.SetReadLimits(0, 0);  // outputs may be of any size
  for (TestResult& result : *results) {
    std::string file = "/dev/null";
    if (!directory.empty()) {
      std::string problem = MakeLogFile(result.name, directory, &file);
      *status = kTrouble;
      if (!problem.empty()) return problem;
    }
    if (socket.GetFile(VorString(file), kStallLimit) != 0) {
      *status = kNoServer;
      return "the output of " + result.name + " did not arrive: " + Reason(socket);
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
    Print(HelpFor(Command::kRequest));
    return kAllPassed;
  }
  std::string token;
  problem = CheckExpression(options.expression);
  if (problem.empty()) problem = LoadToken(options.tokenFile, &token);
  // Before the server runs anything.
  if (problem.empty() && !options.outDirectory.empty()) {
    problem = MakeDirectory(options.outDirectory);
  }
  if (!problem.empty()) return Refuse(problem);

  const auto start = std::chrono::steady_clock::now();
  TASocket socket(kSocketBuffer);
  std::vector<TestResult> results;
  problem = Ask(options, token, socket, &results);
  if (!problem.empty()) return Refuse(problem, kNoServer);
  if (results.empty()) return Refuse("'" + options.expression + "' selects no test of the server");
  int status = kTrouble;
  problem = Fetch(options.outDirectory, socket, &results, &status);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  Print(MakeReport(results, seconds));
  if (!problem.empty()) return Refuse(problem, status);
  return AllPassed(results) ? kAllPassed : kSomeFailed;
}

}  // namespace campaign
