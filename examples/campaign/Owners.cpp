#include "Owners.h"

#include <map>

#include "InputFile.h"
#include "Output.h"

namespace campaign {

// Null texts if nobody is known.
struct Owners::Owner {
  const char* code;
  const char* line;
};

std::string Owners::Load(const std::string& orgFile, const std::string& kvrFile) {
  // The library treats an unreadable file as an empty one, so no responsible would be found and no
  // error shown.
  for (const std::string& path : {orgFile, kvrFile}) {
    std::ifstream file;
    const std::string problem = OpenInput(path, &file);
    if (!problem.empty()) return problem;
  }
  _responsibles.parseFiles(orgFile.c_str(), kvrFile.c_str());
  return "";
}

Owners::Owner Owners::Find(const std::string& test) const {
  const std::size_t slash = test.find('/');
  if (slash == std::string::npos) return {nullptr, nullptr};
  const std::string framework = test.substr(0, slash);
  const std::string module = test.substr(slash + 1);
  const char* const fw = framework.c_str();
  if (const char* const code = _responsibles.getModuleShortResponsible(fw, module.c_str())) {
    return {code, _responsibles.getModuleLongResponsible(fw, module.c_str())};
  }
  return {_responsibles.getFrameworkShortResponsible(fw),
          _responsibles.getFrameworkLongResponsible(fw)};
}

std::string Owners::CodeOf(const std::string& test) const {
  const char* const code = Find(test).code;
  return code == nullptr ? "" : code;
}

std::string Owners::ListFailures(const std::vector<TestResult>& results) const {
  std::map<std::string, std::string> tests;  // by heading of the responsible
  std::string nobodys;
  for (const TestResult& result : results) {
    if (result.outcome == Outcome::kPassed || result.outcome == Outcome::kNotRun) continue;
    const Owner owner = Find(result.name);
    const char* const line = owner.line == nullptr ? "(not in the organisation file)" : owner.line;
    std::string& list =
        owner.code == nullptr ? nobodys : tests[Printable(std::string(owner.code) + "  " + line)];
    list += "  " + result.name + ": " + Describe(result) + "\n";
  }
  std::string text;
  for (const auto& [heading, list] : tests) text += heading + "\n" + list;
  if (!nobodys.empty()) text += "nobody known\n" + nobodys;
  return text.empty() ? "" : "\nfailures by responsible\n\n" + text;
}

}  // namespace campaign
