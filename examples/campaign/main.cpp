// campaign: runs a list of test commands in parallel.  See `campaign --help`.

#include <stdio.h>
#include <string.h>

#include <algorithm>

#include "Commands.h"
#include "Output.h"
#include "Startup.h"
#include "VorToolsInfrastructure.h"

namespace {

constexpr const char* kHelp =
    "usage: campaign COMMAND ...\n"
    "\n"
    "  campaign run       run tests on this machine\n"
    "  campaign serve     run tests for requests from the network\n"
    "  campaign request   ask a server to run tests\n"
    "  campaign --version show the version\n"
    "\n"
    "Every command has --help.\n";

int Dispatch(int argc, char** argv) {
  const char* const command = argc >= 2 ? argv[1] : "";
  if (strcmp(command, "run") == 0) return campaign::RunCommand(argc, argv);
  if (strcmp(command, "serve") == 0) return campaign::ServeCommand(argc, argv);
  if (strcmp(command, "request") == 0) return campaign::RequestCommand(argc, argv);
  if (argc == 2 && strcmp(command, "--help") == 0) {
    campaign::Print(kHelp);
    return campaign::kAllPassed;
  }
  if (argc == 2 && strcmp(command, "--version") == 0) {
    campaign::Print("campaign " + std::string(VorVersion()) + "\n");
    return campaign::kAllPassed;
  }
  if (argc < 2) {
    fputs(kHelp, stderr);
    return campaign::kTrouble;
  }
  return campaign::Refuse("unknown command '" + std::string(command) + "' (see campaign --help)");
}

}  // namespace

int main(int argc, char** argv) {
  campaign::PrepareProcess();
  const int status = Dispatch(argc, argv);
  campaign::FinishOutput();
  const std::string problem = campaign::OutputProblem();
  return problem.empty() ? status : campaign::Refuse(problem, std::max(status, campaign::kTrouble));
}
