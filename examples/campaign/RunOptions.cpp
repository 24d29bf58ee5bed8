#include "RunOptions.h"

#include <getopt.h>

#include <charconv>
#include <string_view>
#include <thread>

namespace campaign {
namespace {

constexpr option kOptions[] = {
    {"tests", required_argument, nullptr, 't'},
    {"jobs", required_argument, nullptr, 'j'},
    {"timeout", required_argument, nullptr, 's'},
    {"results", required_argument, nullptr, 'r'},
    {"junit", required_argument, nullptr, 'x'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

// "" or what is wrong with the number.
std::string ParseNumber(const char* name, std::string_view text, int smallest, int* value) {
  int parsed = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (error != std::errc() || end != text.data() + text.size() || parsed < smallest) {
    return std::string(name) + " takes a whole number from " + std::to_string(smallest) +
           " on, not '" + std::string(text) + "'";
  }
  *value = parsed;
  return "";
}

}  // namespace

std::string RunHelp() {
  return "usage: campaign run --tests FILE [OPTION]... EXPRESSION\n"
         "\n"
         "Runs the tests of FILE whose names EXPRESSION selects, several at once.\n"
         "\n"
         "  --tests FILE      the list: one test a line, 'name command...'; lines that\n"
         "                    begin with # and empty lines are comments.  The command is\n"
         "                    split at blanks, double quotes hold an argument together;\n"
         "                    no shell is involved\n"
         "  --jobs N          tests that run at once (default: one for each processor)\n"
         "  --timeout SECONDS kill a test with all its processes after this time, with\n"
         "                    result 99 (default: 0, no limit)\n"
         "  --results DIR     keep the output of each test in DIR/name.log (default: it is\n"
         "                    thrown away)\n"
         "  --junit FILE      write the results as JUnit XML too\n"
         "  --help            show this text\n"
         "\n"
         "EXPRESSION is made of patterns in which * stands for any text, of && or ||, !\n"
         "and parentheses: '*' is everything, 'unit/*&&!*slow*' the quick unit tests.\n"
         "\n"
         "Ctrl-C kills every running test with its processes and still shows the results.\n"
         "\n"
         "Exit status: 0 all passed, 1 some did not, 2 wrong usage or unreadable input.\n";
}

std::string ParseRunOptions(int argc, char** argv, RunOptions* options) {
  options->limits.jobs = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  std::string problem;
  opterr = 0;
  for (int letter;
       problem.empty() && (letter = getopt_long(argc, argv, ":", kOptions, nullptr)) != -1;) {
    switch (letter) {
      case 't':
        options->testList = optarg;
        break;
      case 'j':
        problem = ParseNumber("--jobs", optarg, 1, &options->limits.jobs);
        break;
      case 's':
        problem = ParseNumber("--timeout", optarg, 0, &options->limits.timeout);
        break;
      case 'r':
        options->resultsFolder = optarg;
        break;
      case 'x':
        options->junitFile = optarg;
        break;
      case 'h':
        options->wantsHelp = true;
        return "";
      case ':':
        problem = std::string(argv[optind - 1]) + " needs a value";
        break;
      default:
        problem = "unknown option " + std::string(argv[optind - 1]);
    }
  }
  if (!problem.empty()) return problem;
  if (options->testList.empty()) return "--tests FILE is missing";
  if (argc - optind != 2) {  // "run" itself and the expression
    return argc - optind < 2 ? "the expression is missing" : "more than one expression";
  }
  options->expression = argv[optind + 1];
  return "";
}

}  // namespace campaign
