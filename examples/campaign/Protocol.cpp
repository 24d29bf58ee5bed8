#include "Protocol.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <set>
#include <string_view>

#include "InputFile.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr std::size_t kLongestToken = 4096;
constexpr std::size_t kMostNewlines = 1024;                // at the end of a token
constexpr std::size_t kLongestAnswer = kSocketBuffer - 5;  // that the buffer takes as one block
constexpr int kFields = 4;                                 // of a result
constexpr double kLongestTest = 999999999;                 // seconds: thirty years
// The largest size of the fields after a name in an answer, each with a blank.
constexpr std::size_t kLongestFields =
    sizeof "not-executable" + sizeof "256" + sizeof "999999999.00" + 1;

std::string WireWord(Outcome outcome) {
  std::string word = Word(outcome);
  std::replace(word.begin(), word.end(), ' ', '-');
  return word;
}

bool ParseOutcome(std::string_view word, Outcome* outcome) {
  for (const Outcome known : kOutcomes) {
    *outcome = known;
    if (WireWord(known) == word) return true;
  }
  return false;
}

template <typename Number>
bool ParseNumber(std::string_view text, Number* number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::string Reason(const TASocket& socket) {
  std::string text = socket.GetErrMsg();
  text.erase(text.find_last_not_of(' ') + 1);  // one message ends with a blank
  const int error = socket.GetErrno();
  return error == 0 ? text : text + " (" + strerror(error) + ")";
}

std::string LoadToken(const std::string& path, std::string* token) {
  if (path.empty()) return "";
  std::ifstream file;
  const std::string unreadable = OpenInput(path, &file);
  if (!unreadable.empty()) return unreadable;
  token->resize(kLongestToken + kMostNewlines);
  // Unlike a stream iterator, it does not throw if the file cannot be read.
  file.read(token->data(), static_cast<std::streamsize>(token->size()));
  if (file.bad()) return "cannot read " + path + ": " + strerror(errno);
  const bool isWhole = file.eof();
  token->resize(static_cast<std::size_t>(file.gcount()));
  token->erase(token->find_last_not_of("\r\n") + 1);
  const bool isText = token->find('\0') == std::string::npos;
  if (token->empty() || token->size() > kLongestToken || !isWhole || !isText) {
    return path + " does not hold a token: a token is a text of 1 to " +
           std::to_string(kLongestToken) + " bytes";
  }
  return "";
}

std::string MakeQuery(const std::string& token, const std::string& expression) {
  return token.empty() ? expression : token + "\n" + expression;
}

bool TakeExpression(const std::string& query, const std::string& token, std::string* expression) {
  if (token.empty()) {
    *expression = query;
    return true;
  }
  const std::string wanted = token + "\n";
  unsigned difference = query.size() < wanted.size() ? 1 : 0;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const char given = i < query.size() ? query[i] : '\0';
    difference |= static_cast<unsigned char>(given ^ wanted[i]);
  }
  if (difference != 0) return false;
  *expression = query.substr(wanted.size());
  return true;
}

bool FitsAnswer(const std::vector<Test>& tests) {
  std::size_t size = 0;
  for (const Test& test : tests) size += test.name.size() + kLongestFields;
  return size <= kLongestAnswer;
}

void ListResults(const std::vector<TestResult>& results, VorListValVorString* answer) {
  for (const TestResult& result : results) {
    char seconds[32];
    snprintf(seconds, sizeof seconds, "%.2f", result.seconds);
    answer->Append(VorString(result.name));
    answer->Append(VorString(WireWord(result.outcome)));
    answer->Append(VorString(std::to_string(result.returnCode)));
    answer->Append(VorString(seconds));
  }
}

bool ParseResults(const VorListValVorString& answer, std::vector<TestResult>* results) {
  if (answer.Size() % kFields != 0) return false;
  std::set<std::string> names;
  for (int i = 1; i <= answer.Size(); i += kFields) {
    TestResult result;
    result.name = std::string(answer[i].View());
    if (!IsSafeName(result.name) || !names.insert(result.name).second) return false;
    if (!ParseOutcome(answer[i + 1].View(), &result.outcome)) return false;
    if (!ParseNumber(answer[i + 2].View(), &result.returnCode)) return false;
    if (!ParseNumber(answer[i + 3].View(), &result.seconds)) return false;
    if ((result.outcome == Outcome::kPassed) != (result.returnCode == 0)) return false;
    // Written so that NaN is refused too.
    if (std::signbit(result.seconds) || !(result.seconds <= kLongestTest)) return false;
    results->push_back(result);
  }
  return true;
}

}  // namespace campaign
