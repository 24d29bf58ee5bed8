#include "TestList.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <string_view>

#include "InputFile.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr std::string_view kBlanks = " \t\r";

// Whether a terminal or a reader may take a character for something else than itself.
bool IsControl(VorUnicodeChar character) {
  const char32_t code = character.GetCodePoint();
  if (code < 0x20 || (code >= 0x7F && code <= 0x9F)) return true;
  // Bytes that are no UTF-8, as VorUnicodeString gives them; an 8-bit terminal obeys these.
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

// Takes a line apart; "" or what is wrong with it.
std::string ParseLine(std::string_view line, Test* test) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  line = line.substr(0, line.find_last_not_of(kBlanks) + 1);
  const std::size_t nameEnd = line.find_first_of(kBlanks);
  test->name = line.substr(0, nameEnd);
  if (HasControls(test->name)) return "a name with control characters cannot be used";
  if (!IsSafeName(test->name)) return "'" + test->name + "' cannot be used as a test name";
  if (nameEnd == std::string_view::npos) return "test '" + test->name + "' has no command";
  test->command = line.substr(line.find_first_not_of(kBlanks, nameEnd));
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

// Read with getline and not with the library's ReadFile: a list may hold names beyond ASCII and
// long commands, and its last line counts even without a newline.
std::string LoadTestList(const std::string& path, std::vector<Test>* tests) {
  std::ifstream file;
  const std::string unreadable = OpenInput(path, &file);
  if (!unreadable.empty()) return unreadable;
  std::set<std::string> names;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (IsComment(line.c_str() + std::min(line.find_first_not_of(kBlanks), line.size()))) continue;
    Test test;
    std::string problem = ParseLine(line, &test);
    if (problem.empty() && !names.insert(test.name).second) {
      problem = "test '" + test.name + "' is there twice";
    }
    if (!problem.empty()) return path + ":" + std::to_string(number) + ": " + problem;
    tests->push_back(test);
  }
  return file.bad() ? "cannot read " + path : "";
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
