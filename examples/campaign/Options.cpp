#include "Options.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <string_view>
#include <thread>
#include <vector>

namespace campaign {
namespace {

// Sets of commands.
constexpr unsigned kRun = 1, kServe = 2, kRequest = 4;

struct Known {
  const char* name;
  unsigned commands;  // that take it
  unsigned needs;     // that require it
  const char* value;  // as the help names it
  std::string Options::*text;
  int Options::*number;
  int smallest = 0;
  int largest = INT_MAX;
  std::vector<std::string> Options::*words = nullptr;  // as many as the help names
};

constexpr Known kKnown[] = {
    {"tests", kRun | kServe, kRun | kServe, "FILE", &Options::testList, nullptr},
    {"jobs", kRun | kServe, 0, "N", nullptr, &Options::jobs, 1},
    {"timeout", kRun | kServe | kRequest, 0, "SECONDS", nullptr, &Options::timeout},
    {"results", kRun | kServe, 0, "DIR", &Options::resultsDirectory, nullptr},
    {"junit", kRun, 0, "FILE", &Options::junitFile, nullptr},
    {"host", kRequest, kRequest, "HOST", &Options::host, nullptr},
    {"port", kServe | kRequest, kServe | kRequest, "PORT", nullptr, &Options::port, 0, 65535},
    {"requests", kServe, 0, "N", nullptr, &Options::requests},
    {"token", kServe | kRequest, 0, "FILE", &Options::tokenFile, nullptr},
    {"out", kRequest, 0, "DIR", &Options::outDirectory, nullptr},
    {"owners", kRun | kServe, 0, "ORG KVR", nullptr, nullptr, 0, 0, &Options::owners},
    {"load", kRun | kServe, 0, "CONTROL USER PASSWORD CONNECTION", nullptr, nullptr, 0, 0,
     &Options::load},
};

// The values that getopt returns for options: these, then one for each position in kKnown.
constexpr int kHelp = 1000;
constexpr int kFirstKnown = 1001;

unsigned SetOf(Command command) {
  return command == Command::kRun ? kRun : command == Command::kServe ? kServe : kRequest;
}

// "" or what is wrong with the value.
std::string Store(const Known& known, std::string_view text, Options* options) {
  if (known.text != nullptr) {
    options->*known.text = text;
    return "";
  }
  int parsed = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (error == std::errc() && end == text.data() + text.size() && parsed >= known.smallest &&
      parsed <= known.largest) {
    options->*known.number = parsed;
    return "";
  }
  const std::string upTo =
      known.largest == INT_MAX ? " on" : " to " + std::to_string(known.largest);
  return "--" + std::string(known.name) + " takes a whole number from " +
         std::to_string(known.smallest) + upTo + ", not '" + std::string(text) + "'";
}

// Stores the values of an option with several values; getopt has read the first.
std::string TakeWords(const Known& known, int argc, char** argv, Options* options) {
  const std::string_view names = known.value;
  auto left = std::count(names.begin(), names.end(), ' ');
  if (argc - optind < left) {
    return "--" + std::string(known.name) + " needs " + std::to_string(left + 1) + " values, " +
           known.value;
  }
  std::vector<std::string>& words = options->*known.words;
  words = {optarg};
  for (; left > 0; --left) words.emplace_back(argv[optind++]);
  return "";
}

constexpr const char* kRunHelp =
    "usage: campaign run --tests FILE [OPTION]... EXPRESSION\n"
    "\n"
    "Runs the tests of FILE whose names EXPRESSION selects, several at once.\n"
    "\n"
    "  --tests FILE      the list, one test a line: 'name command...'.  Empty lines and\n"
    "                    lines that begin with # are comments.  The command is split at\n"
    "                    blanks, and double quotes keep an argument together; no shell\n"
    "                    reads it.  The input of a test is /dev/null\n"
    "  --jobs N          tests that run at once (default: one for each processor)\n"
    "  --timeout SECONDS kill a test with all its processes after this time; its return\n"
    "                    code is then 99 (default: 0, no limit).  A process whose parent\n"
    "                    has ended no longer belongs to a test\n"
    "  --results DIR     keep the output of each test in DIR/name.log (default: discard it)\n"
    "  --junit FILE      also write the results as JUnit XML, after all tests have ended\n"
    "  --owners ORG KVR  list the failures by responsible.  A test is named\n"
    "                    framework/module.  The file KVR has the code of the responsible of\n"
    "                    a module or a framework, the file ORG a line for each code\n"
    "  --load CONTROL USER PASSWORD CONNECTION\n"
    "                    load the results into a database with sqlldr, which gets CONTROL\n"
    "                    and a file with one line for each test: 'name,result,return\n"
    "                    code,seconds,responsible', name and responsible in double quotes.\n"
    "                    With --results DIR that file is kept as DIR/campaign.csv.\n"
    "                    PASSWORD is env:NAME for the value of an environment variable,\n"
    "                    file:PATH for the first line of a file, or the password itself,\n"
    "                    which other users can see while the campaign runs.  While sqlldr\n"
    "                    runs, they can see any password among its arguments\n"
    "  --help            show this text\n"
    "\n"
    "The result of a test is one of these.  Only 'passed' counts as passed.\n"
    "\n"
    "  passed            it ended with return code 0\n"
    "  failed (N)        it ended with return code N, or was killed by signal N\n"
    "  timed out (99)    it was killed because it exceeded its time limit\n"
    "  not found         there is no such program (return code 127)\n"
    "  not executable    the program cannot be executed (126)\n"
    "  not started       the system could not start it, or its log cannot be written (125)\n"
    "  lost              it ran, but how it ended is not known (124)\n"
    "  interrupted       it was killed because the campaign was interrupted\n"
    "  not run           the campaign was interrupted before it started\n";

constexpr const char* kServeHelp =
    "usage: campaign serve --port PORT --tests FILE [OPTION]...\n"
    "\n"
    "Runs tests of FILE for 'campaign request', one request after the other, and sends\n"
    "back the results and the output of each test.\n"
    "\n"
    "Anyone who reaches the port can run these tests, unless there is a token.  The\n"
    "transport is NOT ENCRYPTED: requests, the token and the results can be read on the\n"
    "network.\n"
    "\n"
    "A request must arrive within 10 seconds and have at most 1 MiB.  It is refused before\n"
    "any test runs if its results could exceed 1 MiB.  The reason for a refusal is shown\n"
    "here; the requester gets no answer.  One that takes less than 16 KiB a second, or more\n"
    "than 5 minutes for the output of a test, is cut off.\n"
    "\n"
    "  --port PORT       the port to listen on, at all addresses; 0 for any free port,\n"
    "                    which is shown\n"
    "  --tests FILE, --jobs N, --timeout SECONDS, --owners ORG KVR,\n"
    "  --load CONTROL USER PASSWORD CONNECTION\n"
    "                    as for 'campaign run'\n"
    "  --results DIR     keep the output in DIR/name.log (default: only while it is sent)\n"
    "  --requests N      end after this many requests, failed ones included (default: 0,\n"
    "                    no limit)\n"
    "  --token FILE      refuse requests that do not carry the content of this file\n"
    "  --help            show this text\n"
    "\n"
    "Exit status: 0 ended after N requests, 1 interrupted, 2 wrong usage, unreadable input,\n"
    "unwritable output or no port.\n";

constexpr const char* kRequestHelp =
    "usage: campaign request --host HOST --port PORT [OPTION]... EXPRESSION\n"
    "\n"
    "Asks a 'campaign serve' to run the tests that EXPRESSION selects, and shows the\n"
    "results.  The transport is NOT ENCRYPTED.\n"
    "\n"
    "  --host HOST --port PORT\n"
    "                    the address of the server\n"
    "  --timeout SECONDS try to reach the server for this time, and wait for the results\n"
    "                    for this time (default: one attempt, no limit on the results).\n"
    "                    The transfer of the outputs has no limit while bytes arrive\n"
    "  --out DIR         store the output of each test in DIR/name.log (default: discard\n"
    "                    it)\n"
    "  --token FILE      send the content of this file, which the server must have too\n"
    "  --help            show this text\n";

constexpr const char* kExpressionHelp =
    "\n"
    "EXPRESSION combines patterns with && or ||, ! and parentheses.  In a pattern, * stands\n"
    "for any text: '*' selects every test, 'unit/*&&!*slow*' the quick unit tests.\n"
    "\n";

constexpr const char* kStatusHelp =
    "Exit status: 0 all passed, 1 some did not pass, 2 wrong usage, unreadable input,\n"
    "unwritable output, no test selected";

}  // namespace

std::string HelpFor(Command command) {
  if (command == Command::kServe) return kServeHelp;
  if (command == Command::kRequest) {
    return std::string(kRequestHelp) + kExpressionHelp + kStatusHelp +
           ",\n3 no connection to the server, request refused, or connection lost.\n";
  }
  return std::string(kRunHelp) + kExpressionHelp +
         "Ctrl-C kills every running test with its processes and still shows the results.  The\n"
         "same happens once nobody reads the output, as in 'campaign run ... | head -1'.\n\n" +
         kStatusHelp + " or results that could not be loaded.\n";
}

std::string ParseOptions(Command command, int argc, char** argv, Options* options) {
  options->jobs = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  const unsigned self = SetOf(command);
  std::vector<option> accepted = {{"help", no_argument, nullptr, kHelp}};
  for (std::size_t i = 0; i < std::size(kKnown); ++i) {
    if ((kKnown[i].commands & self) == 0) continue;
    accepted.push_back(
        {kKnown[i].name, required_argument, nullptr, kFirstKnown + static_cast<int>(i)});
  }
  accepted.push_back({nullptr, 0, nullptr, 0});

  unsigned long given = 0;  // bits by place in kKnown
  opterr = 0;
  optind = 2;  // getopt ends at the command itself if POSIXLY_CORRECT is set
  for (int found; (found = getopt_long(argc, argv, ":", accepted.data(), nullptr)) != -1;) {
    if (found == kHelp) {
      options->wantsHelp = true;
      return "";
    }
    if (found == ':') return std::string(argv[optind - 1]) + " needs a value";
    if (found < kFirstKnown) {
      // If the letter is not the last of its word, optind is still the index of that word.
      const bool isLetter = optopt > 0 && optopt < kHelp;
      return "unknown option " +
             (isLetter ? std::string{'-', static_cast<char>(optopt)} : argv[optind - 1]);
    }
    const auto place = static_cast<std::size_t>(found - kFirstKnown);
    given |= 1ul << place;
    const Known& known = kKnown[place];
    std::string problem = known.words != nullptr ? TakeWords(known, argc, argv, options)
                                                 : Store(known, optarg, options);
    if (!problem.empty()) return problem;
  }
  for (std::size_t i = 0; i < std::size(kKnown); ++i) {
    if ((kKnown[i].needs & self) == 0 || (given >> i & 1) != 0) continue;
    return "--" + std::string(kKnown[i].name) + " " + kKnown[i].value + " is missing";
  }

  const int words = argc - optind;
  if (command == Command::kServe) return words == 0 ? "" : "serve takes no expression";
  if (words != 1) {
    return words < 1 ? "the expression is missing: '*' selects every test"
                     : "more than one expression: quote it, '...'";
  }
  options->expression = argv[optind];
  return "";
}

}  // namespace campaign
