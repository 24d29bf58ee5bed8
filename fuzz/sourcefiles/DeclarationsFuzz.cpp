#include <map>

#include "sourcefiles/Responsibles.h"
#include "sourcefiles/VorFwModRespHelper.h"

using namespace responsibles;

namespace {

// Reads declarations a second time, with copies of the fields.
struct Model {
  struct Framework {
    std::string responsible;
    std::map<std::string, std::string> modules;
  };

  void Add(const std::string& line) {
    std::vector<std::string> fields;
    std::string rest = line;
    while (fields.size() < 5) {
      const std::size_t blank = rest.find(' ');
      if (blank == std::string::npos || blank + 1 == rest.size()) return AddBad(line);
      fields.push_back(rest.substr(0, blank));
      rest.erase(0, blank + 1);
    }
    if (!rest.starts_with("Resp:") || rest.size() == 5) return AddBad(line);
    const std::string responsible = Upper(rest.substr(5));
    if (fields[4].starts_with("Fw:")) {
      const bool isNew = frameworks.emplace(fields[4].substr(3), Framework{responsible, {}}).second;
      if (isNew) return;
      messages +=
          "# Error: fw " + Shown(fields[4]) + " referenced multiple time in file " + file + "\n";
    } else if (fields[4].starts_with("Mod:")) {
      AddModule(fields[3].size() < 7 ? "" : fields[3].substr(7), fields[4].substr(4), responsible);
    }
  }

  void AddModule(const std::string& framework, const std::string& module,
                 const std::string& responsible) {
    const auto found = frameworks.find(framework);
    if (found == frameworks.end()) {
      messages += "# Error: fw " + Shown(framework) + " not yet referenced for mod " +
                  Shown(module) + " in file " + file + "\n";
    } else if (!found->second.modules.try_emplace(module, responsible).second) {
      messages += "# Error: mod " + Shown(module) +
                  " defined multiple time\n# Error: unable to add mod " + Shown(module) +
                  " in fw " + Shown(framework) + " for file " + file + "\n";
    }
  }

  void AddBad(const std::string& line) {
    messages += "# Error: Bad line in file (" + file + "): " + Shown(line) + "\n";
  }

  std::string file;
  std::map<std::string, Framework> frameworks;
  std::string messages;
};

}  // namespace

// Input: the declaration file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile kvr;
  static Printed printed;
  const std::string content = Content(data, size);
  kvr.Write(content);
  Model want;
  want.file = kvr.Path();
  for (const std::string& line : LinesOf(content)) want.Add(line);

  VorFwModRespHelper helper;
  Expect(helper.parseKVRFile(want.file.c_str()) == 0);
  Expect(printed.Take() == want.messages);
  for (const auto& [name, framework] : want.frameworks) {
    Expect(IsSame(helper.getFrameworkShortResponsible(name.c_str()), &framework.responsible));
    Expect(helper.getFrameworkLongResponsible(name.c_str()) == nullptr);
    Expect(helper.getModuleShortResponsible(name.c_str(), "no such module") == nullptr);
    for (const auto& [module, responsible] : framework.modules) {
      Expect(IsSame(helper.getModuleShortResponsible(name.c_str(), module.c_str()), &responsible));
    }
  }
  return 0;
}
