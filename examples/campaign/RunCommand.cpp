#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <chrono>
#include <fstream>

#include "Campaign.h"
#include "Commands.h"
#include "Followup.h"
#include "Interrupt.h"
#include "JUnitReport.h"
#include "Options.h"
#include "Progress.h"
#include "Report.h"

namespace campaign {
namespace {

// Opened before anything runs: a report that cannot be written should not cost a campaign.
std::string OpenJUnitFile(const std::string& path, std::ofstream* file) {
  if (path.empty()) return "";
  file->open(path);
  return *file ? "" : "cannot write " + path + ": " + strerror(errno);
}

}  // namespace

int RunCommand(int argc, char** argv) {
  Options options;
  std::string problem = ParseOptions(Command::kRun, argc, argv, &options);
  if (!problem.empty()) return Refuse(problem + " (see campaign run --help)");
  if (options.wantsHelp) {
    fputs(HelpFor(Command::kRun).c_str(), stdout);
    return kAllPassed;
  }

  std::vector<Test> all;
  problem = LoadTestList(options.testList, &all);
  if (!problem.empty()) return Refuse(problem);
  const std::vector<Test> tests = SelectTests(all, options.expression);
  if (tests.empty()) {
    return Refuse("'" + options.expression + "' selects no test of " + options.testList);
  }
  Followup followup;
  problem = followup.Prepare(options);
  if (!problem.empty()) return Refuse(problem);
  std::ofstream junitFile;
  problem = OpenJUnitFile(options.junitFile, &junitFile);
  std::vector<std::string> logFiles;
  if (problem.empty() && !options.resultsFolder.empty()) {
    problem = MakeLogFiles(tests, options.resultsFolder, &logFiles);
  }
  if (!problem.empty()) return Refuse(problem);

  CatchInterrupts();
  const auto start = std::chrono::steady_clock::now();
  Progress progress(static_cast<int>(tests.size()));
  const std::vector<TestResult> results =
      RunCampaign(tests, options.GetLimits(), logFiles, &progress);
  progress.Finish();
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

  printf("\n%s", MakeReport(results, seconds).c_str());
  fflush(stdout);
  if (junitFile.is_open()) {
    junitFile << MakeJUnitReport(results, seconds);
    junitFile.close();
    if (!junitFile) problem = "cannot write " + options.junitFile;
  }
  const std::string followupProblem = followup.Apply(results);
  if (problem.empty()) problem = followupProblem;
  if (!problem.empty()) return Refuse(problem);
  return AllPassed(results) ? kAllPassed : kSomeFailed;
}

}  // namespace campaign
