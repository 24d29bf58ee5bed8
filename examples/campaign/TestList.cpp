#include "TestList.h"

#include <errno.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string_view>

#include "InputFile.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // some editors begin a file with it

// Whether a character may change what a terminal or a reader sees of the others.
bool IsControl(VorUnicodeChar character) {
  const char32_t code = character.GetCodePoint();
  if (code < 0x20 || (code >= 0x7F && code <= 0x9F)) return true;
  // Bytes that are not UTF-8, as VorUnicodeString keeps them; an 8-bit terminal interprets these.
  if (code >= 0xDC80 && code <= 0xDC9F) return true;
  // Marks that reverse the order of what is shown.
  if (code == 0x061C || code == 0x200E || code == 0x200F) return true;
  if ((code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069)) return true;
  return character.IsCntrl() == 1;
}

bool HasControls(const std::string& text) {
  const VorUnicodeString characters(text.c_str());
  for (int i = 0; i < characters.GetLengthInChar(); ++i) {
    if (IsControl(characters[i])) return true;
  }
  return text.find('\0') != std::string::npos;
}

// Whether TAProcess::Start would drop words: those of a quoted phrase that is not closed before the
// next one begins or the command ends.
bool LosesWords(const std::string& command) {
  VorListValVorString words;
  Split(VorString(command), words);
  bool inPhrase = false;
  for (int i = 2; i <= words.Size(); ++i) {
    const bool opens = words[i].View().starts_with('"');
    const bool closes = words[i].View().ends_with('"');
    if (opens && !closes && inPhrase) return true;
    if (opens != closes) inPhrase = opens;
  }
  return inPhrase;
}

// Splits a line into name and command.  Returns "" or what is wrong with it.
std::string ParseLine(std::string_view line, Test* test) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  line = line.substr(0, line.find_last_not_of(kBlanks) + 1);
  const std::size_t nameEnd = line.find_first_of(kBlanks);
  test->name = line.substr(0, nameEnd);
  if (HasControls(test->name)) return "a name with control characters cannot be used";
  if (!IsSafeName(test->name)) return "'" + test->name + "' cannot be used as a test name";
  if (nameEnd == std::string_view::npos) return "test '" + test->name + "' has no command";
  test->command = line.substr(line.find_first_not_of(kBlanks, nameEnd));
  if (test->command.find('\0') != std::string::npos) {
    return "the command of '" + test->name + "' has a NUL byte, which no command can have";
  }
  if (LosesWords(test->command)) {
    return "the command of '" + test->name + "' has a double quote without its partner";
  }
  return "";
}

}  // namespace

bool IsSafeName(const std::string& name) {
  if (name.empty() || name.front() == '/' || name.back() == '/') return false;
  if (name.find('\\') != std::string::npos || HasControls(name)) return false;
  VorListValVorString steps;
  Split(VorString(name), steps, "/");
  for (int i = 1; i <= steps.Size(); ++i) {
    if (steps[i] == "." || steps[i] == "..") return false;
  }
  return name.find("//") == std::string::npos;
}

// Does not use ReadFile of the library: a list may have names beyond ASCII and long commands, and
// its last line counts even without a newline.
std::string LoadTestList(const std::string& path, std::vector<Test>* tests) {
  std::ifstream file;
  const std::string unreadable = OpenInput(path, &file);
  if (!unreadable.empty()) return unreadable;
  std::set<std::string> names;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (number == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    if (IsComment(line.c_str() + std::min(line.find_first_not_of(kBlanks), line.size()))) continue;
    Test test;
    std::string problem = ParseLine(line, &test);
    if (problem.empty() && !names.insert(test.name).second) {
      problem = "test '" + test.name + "' is listed twice";
    }
    if (!problem.empty()) return path + ":" + std::to_string(number) + ": " + problem;
    tests->push_back(test);
  }
  return file.bad() ? "cannot read " + path + ": " + strerror(errno) : "";
}

std::string CheckExpression(const std::string& expression) {
  std::vector<char> operators = {'\0'};  // of the group and of those around it; NUL: none yet
  for (std::size_t i = 0; i < expression.size(); ++i) {
    const char c = expression[i];
    if (c == '(') operators.push_back('\0');
    if (c == ')') operators.pop_back();
    if (operators.empty()) return "'" + expression + "' has a ) without its (";
    if ((c != '&' && c != '|') || expression[i + 1] != c) continue;
    if (operators.back() != '\0' && operators.back() != c) {
      return "'" + expression + "' mixes && and ||: put parentheses around one of them";
    }
    operators.back() = c;
    ++i;
  }
  return operators.size() == 1 ? "" : "'" + expression + "' has a ( without its )";
}

std::vector<Test> SelectTests(const std::vector<Test>& tests, const std::string& expression) {
  const VorString wanted(expression);
  std::vector<Test> selected;
  for (const Test& test : tests) {
    if (TestMatchWithLogExp(VorString(test.name), wanted) == 1) selected.push_back(test);
  }
  return selected;
}

}  // namespace campaign
