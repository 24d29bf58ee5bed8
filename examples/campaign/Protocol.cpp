#include "Protocol.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>

#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr std::size_t kLongestToken = 4096;
constexpr int kTimeoutCode = 99;
constexpr std::size_t kLongestAnswer = kSocketBuffer - 5;  // that the buffer takes as one block
constexpr int kFields = 3;                                 // of a result
constexpr double kLongestTest = 999999999;                 // seconds: thirty years
// What goes with a name into an answer at most: return code, seconds, a blank behind each.
constexpr std::size_t kLongestFields = sizeof "256" + sizeof "999999999.00" + 1;

template <typename Number>
bool ParseNumber(std::string_view text, Number* number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::string LoadToken(const std::string& path, std::string* token) {
  if (path.empty()) return "";
  std::ifstream file(path, std::ios::binary);
  if (!file) return "cannot read " + path + ": " + strerror(errno);
  token->assign(std::istreambuf_iterator<char>(file), {});
  token->erase(token->find_last_not_of("\r\n") + 1);
  const bool isText = token->find('\0') == std::string::npos;
  if (token->empty() || token->size() > kLongestToken || !isText) {
    return path + " does not hold a token: text of 1 to " + std::to_string(kLongestToken) +
           " bytes";
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
    if (!ParseNumber(answer[i + 1].View(), &result.returnCode)) return false;
    if (!ParseNumber(answer[i + 2].View(), &result.seconds)) return false;
    // Written so that what is no number is refused too.
    if (std::signbit(result.seconds) || !(result.seconds <= kLongestTest)) return false;
    result.outcome = result.returnCode == 0              ? Outcome::kPassed
                     : result.returnCode == kTimeoutCode ? Outcome::kTimedOut
                                                         : Outcome::kFailed;
    results->push_back(result);
  }
  return true;
}

}  // namespace campaign
