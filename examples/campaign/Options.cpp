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
  unsigned needs;     // that cannot do without it
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
    {"results", kRun | kServe, 0, "DIR", &Options::resultsFolder, nullptr},
    {"junit", kRun, 0, "FILE", &Options::junitFile, nullptr},
    {"host", kRequest, kRequest, "HOST", &Options::host, nullptr},
    {"port", kServe | kRequest, kServe | kRequest, "PORT", nullptr, &Options::port, 0, 65535},
    {"requests", kServe, 0, "N", nullptr, &Options::requests},
    {"token", kServe | kRequest, 0, "FILE", &Options::tokenFile, nullptr},
    {"out", kRequest, 0, "DIR", &Options::outFolder, nullptr},
    {"owners", kRun | kServe, 0, "ORG KVR", nullptr, nullptr, 0, 0, &Options::owners},
    {"load", kRun | kServe, 0, "CONTROL USER PASSWORD CONNECTION", nullptr, nullptr, 0, 0,
     &Options::load},
};

// What getopt gives for an option: its place in kKnown, behind these.
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

// Takes the values of an option that has several, of which getopt has taken the first.
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
    "  --owners ORG KVR  list the failures by responsible: the test framework/module\n"
    "                    belongs to the one whom the file KVR names for that module, or\n"
    "                    else for that framework; the file ORG has a line for each\n"
    "  --load CONTROL USER PASSWORD CONNECTION\n"
    "                    load the results into a database: sqlldr gets CONTROL and a file\n"
    "                    with a line 'name,result,return code,seconds,responsible' for\n"
    "                    each test, name and responsible in double quotes; it is kept as\n"
    "                    DIR/campaign.csv with --results DIR.  PASSWORD is env:NAME for\n"
    "                    the value of an environment variable, file:PATH for the first\n"
    "                    line of a file, or the password itself, which others can see as\n"
    "                    long as the campaign runs.  While sqlldr runs, other users of\n"
    "                    this machine can see the password among its arguments anyway\n"
    "  --help            show this text\n";

constexpr const char* kServeHelp =
    "usage: campaign serve --port PORT --tests FILE [OPTION]...\n"
    "\n"
    "Runs tests of FILE for whoever asks with 'campaign request', one request after the\n"
    "other, and sends back the results and the output of each test.\n"
    "\n"
    "Anyone who reaches the port can have these tests run, unless there is a token.  The\n"
    "transport is NOT ENCRYPTED: requests, the token and the results can be read on the\n"
    "network.\n"
    "\n"
    "A requester has 10 seconds and 1 MiB to say what it wants.  A selection whose results\n"
    "could be more than an answer holds, 1 MiB as well, is refused before any test runs.\n"
    "Who is refused gets no answer; the reason is shown here.\n"
    "\n"
    "  --port PORT       where to listen, on all addresses; 0 for any free port, which\n"
    "                    is shown\n"
    "  --tests FILE, --jobs N, --timeout SECONDS, --owners ORG KVR,\n"
    "  --load CONTROL USER PASSWORD CONNECTION\n"
    "                    as for 'campaign run'\n"
    "  --results DIR     keep the output in DIR/name.log (default: only while it is sent)\n"
    "  --requests N      end after this many requests, with those that fail (default: 0,\n"
    "                    go on)\n"
    "  --token FILE      refuse requests that do not carry the content of this file\n"
    "  --help            show this text\n"
    "\n"
    "Exit status: 0 ended, 1 interrupted, 2 wrong usage, unreadable input or no port.\n";

constexpr const char* kRequestHelp =
    "usage: campaign request --host HOST --port PORT [OPTION]... EXPRESSION\n"
    "\n"
    "Has the tests that EXPRESSION selects run by a 'campaign serve', and shows the\n"
    "results.  The transport is NOT ENCRYPTED.\n"
    "\n"
    "  --host HOST --port PORT\n"
    "                    where the server is\n"
    "  --timeout SECONDS keep trying to reach the server, and wait for the results, for\n"
    "                    this time each (default: one attempt, no limit on the results);\n"
    "                    the outputs may then take as long as they go on arriving\n"
    "  --out DIR         store the output of each test in DIR/name.log\n"
    "  --token FILE      carry the content of this file, as the server wants\n"
    "  --help            show this text\n";

constexpr const char* kExpressionHelp =
    "\n"
    "EXPRESSION is made of patterns in which * stands for any text, of && or ||, !\n"
    "and parentheses: '*' is everything, 'unit/*&&!*slow*' the quick unit tests.\n"
    "\n";

constexpr const char* kStatusHelp =
    "Exit status: 0 all passed, 1 some did not, 2 wrong usage, unreadable input or no test\n"
    "selected";

}  // namespace

std::string HelpFor(Command command) {
  if (command == Command::kServe) return kServeHelp;
  if (command == Command::kRequest) {
    return std::string(kRequestHelp) + kExpressionHelp + kStatusHelp +
           ", 3 the server could not be reached, refused or broke off.\n";
  }
  return std::string(kRunHelp) + kExpressionHelp +
         "Ctrl-C kills every running test with its processes and still shows the results.\n\n" +
         kStatusHelp + ",\nor results that could not be written or loaded.\n";
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
  for (int found; (found = getopt_long(argc, argv, ":", accepted.data(), nullptr)) != -1;) {
    if (found == kHelp) {
      options->wantsHelp = true;
      return "";
    }
    if (found == ':') return std::string(argv[optind - 1]) + " needs a value";
    if (found < kFirstKnown) {
      // A letter need not end its word, and getopt then stands behind the word before.
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

  const int words = argc - optind - 1;  // without the command itself
  if (command == Command::kServe) return words == 0 ? "" : "serve takes no expression";
  if (words != 1) return words < 1 ? "the expression is missing" : "more than one expression";
  options->expression = argv[optind + 1];
  return "";
}

}  // namespace campaign
