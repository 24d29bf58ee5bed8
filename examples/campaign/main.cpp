// campaign: runs a list of test commands in parallel.  See `campaign --help`.

#include <stdio.h>
#include <string.h>

#include "Commands.h"

namespace {

constexpr const char* kHelp =
    "usage: campaign COMMAND ...\n"
    "\n"
    "  campaign run       run tests on this machine\n"
    "  campaign serve     run tests for whoever asks over the network\n"
    "  campaign request   have a server run tests\n"
    "\n"
    "campaign COMMAND --help tells more.\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 2 && strcmp(argv[1], "run") == 0) return campaign::RunCommand(argc, argv);
  if (argc >= 2 && strcmp(argv[1], "serve") == 0) return campaign::ServeCommand(argc, argv);
  if (argc >= 2 && strcmp(argv[1], "request") == 0) return campaign::RequestCommand(argc, argv);
  if (argc == 2 && strcmp(argv[1], "--help") == 0) {
    fputs(kHelp, stdout);
    return campaign::kAllPassed;
  }
  if (argc < 2) {
    fputs(kHelp, stderr);
  } else {
    fprintf(stderr, "campaign: unknown command '%s' (see campaign --help)\n", argv[1]);
  }
  return campaign::kBadInput;
}
