#include <chrono>

#include "Campaign.h"
#include "Commands.h"
#include "Followup.h"
#include "Interrupt.h"
#include "JUnitReport.h"
#include "Options.h"
#include "Output.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Report.h"
#include "Startup.h"

namespace campaign {
namespace {

// Reads, makes and checks all that a campaign needs, so that a problem shows before any test runs.
// Returns "" or one line that says what is wrong.
std::string Prepare(const Options& options, std::vector<Test>* tests,
                    std::vector<std::string>* logFiles, Followup* followup) {
  std::vector<Test> all;
  std::string problem = LoadTestList(options.testList, &all);
  if (problem.empty()) problem = CheckExpression(options.expression);
  if (!problem.empty()) return problem;
  *tests = SelectTests(all, options.expression);
  if (tests->empty()) {
    return "'" + options.expression + "' selects none of the " + std::to_string(all.size()) +
           " tests of " + options.testList;
  }
  problem = followup->Prepare(options);
  if (problem.empty() && !options.resultsDirectory.empty()) {
    problem = MakeLogFiles(*tests, options.resultsDirectory, logFiles);
  }
  // After the logs, because it may be in their directory.
  if (problem.empty() && !options.junitFile.empty()) problem = CheckWritable(options.junitFile);
  return problem.empty() ? DetachInput() : problem;
}

}  // namespace

int RunCommand(int argc, char** argv) {
  Options options;
  std::string problem = ParseOptions(Command::kRun, argc, argv, &options);
  if (!problem.empty()) return Refuse(problem + " (see campaign run --help)");
  if (options.wantsHelp) {
    Print(HelpFor(Command::kRun));
    return kAllPassed;
  }
  std::vector<Test> tests;
  std::vector<std::string> logFiles;
  Followup followup;
  problem = Prepare(options, &tests, &logFiles, &followup);
  if (!problem.empty()) return Refuse(problem);

  CatchInterrupts();
  const auto start = std::chrono::steady_clock::now();
  Progress progress(static_cast<int>(tests.size()), Watcher::kReader);
  const std::vector<TestResult> results =
      RunCampaign(tests, options.GetLimits(), logFiles, &progress);
  progress.Finish();
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

  Print("\n" + MakeReport(results, seconds));
  int status = AllPassed(results) ? kAllPassed : kSomeFailed;
  if (!options.junitFile.empty()) {
    problem = WriteWhole(options.junitFile, MakeJUnitReport(results, seconds));
    if (!problem.empty()) status = Refuse(problem);
  }
  problem = followup.Apply(results);
  if (!problem.empty()) status = Refuse(problem);
  return status;
}

}  // namespace campaign
