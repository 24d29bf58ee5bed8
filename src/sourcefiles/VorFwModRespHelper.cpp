#include "sourcefiles/VorFwModRespHelper.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "containers/VorHashSCMap.h"
#include "foundation/Tracing.h"
#include "sourcefiles/VorQMAStream.h"

namespace {

constexpr std::size_t kShortestOrganisation = 8;  // bytes of a line
constexpr std::size_t kLongestCode = 3;           // bytes
constexpr std::size_t kFields = 6;                // of a declaration
constexpr std::size_t kBeforeFramework = 7;  // bytes of the fourth field that mean nothing here

char Upper(char c) {
  return static_cast<char>(toupper(static_cast<unsigned char>(c)));
}

void ToUpper(char* text) {
  for (; *text != '\0'; ++text) *text = Upper(*text);
}

char* Copy(const char* text) {
  char* const copy = strdup(text);
  FATAL(copy == nullptr, "VorFwModRespHelper, no memory");
  return copy;
}

// Null if the map or the key is.
void* Find(VorHashSCMap* map, const char* key) {
  void* value = nullptr;
  if (map != nullptr && key != nullptr) map->search(key, &value);
  return value;
}

// For a key that the map does not hold.
void Add(VorHashSCMap* map, const char* key, void* value) {
  FATAL(map->insert(key, value) == nullptr, "VorFwModRespHelper, no memory");
}

template <typename Release>
void ReleaseValues(VorHashSCMap* map, Release release) {
  if (map == nullptr) return;
  const std::unique_ptr<VorMapIterator> walk(map->getIterator());
  while (walk != nullptr && walk->next() != 0) release(walk->getValue());
}

// What follows prefix at the start of text; null if text does not start with it.
char* Behind(const char* prefix, char* text) {
  const std::size_t length = strlen(prefix);
  return strncmp(text, prefix, length) == 0 ? text + length : nullptr;
}

// Where the fields of a declaration start; the last one is the rest.  False if there are too few.
bool FindFields(char* line, std::array<char*, kFields>* fields) {
  (*fields)[0] = line;
  for (std::size_t i = 1; i < kFields; ++i) {
    char* const blank = strchr((*fields)[i - 1], ' ');
    if (blank == nullptr || blank[1] == '\0') return false;
    (*fields)[i] = blank + 1;
  }
  return true;
}

// The code of an organisation line, between its last two dots; empty if the line is bad.
std::string_view CodeOf(std::string_view line) {
  if (line.size() < kShortestOrganisation || line.back() != '.') return "";
  line.remove_suffix(1);
  const std::size_t dot = line.rfind('.');
  if (dot == std::string_view::npos) return "";
  const std::string_view code = line.substr(dot + 1);
  return code.size() <= kLongestCode ? code : "";
}

}  // namespace

// A framework that the KVR file declares.
struct VorFwModRespHelper::Framework {
  explicit Framework(const char* code) : responsible(Copy(code)) {}
  Framework(const Framework&) = delete;
  Framework& operator=(const Framework&) = delete;
  ~Framework() {
    ReleaseValues(&modules, free);
    free(responsible);
  }

  char* const responsible;
  VorHashSCMap modules{nullptr};  // the short responsible of each module
};

VorFwModRespHelper::VorFwModRespHelper() noexcept = default;

VorFwModRespHelper::~VorFwModRespHelper() {
  ReleaseValues(_frameworks.get(), [](void* value) { delete static_cast<Framework*>(value); });
  ReleaseValues(_organisations.get(), free);
}

int VorFwModRespHelper::parseFiles(const char* orgFile, const char* kvrFile) noexcept {
  parseQXOrgFile(orgFile);
  parseKVRFile(kvrFile);
  return 0;
}

int VorFwModRespHelper::parseQXOrgFile(const char* file) noexcept {
  if (_organisations != nullptr) return 1;
  _organisations = std::make_unique<VorHashSCMap>(nullptr);
  vor::VorQMAStream lines(file);
  while (const char* const line = lines.NextLine()) AddOrganisation(line, file);
  return 0;
}

int VorFwModRespHelper::parseKVRFile(const char* file) noexcept {
  if (_frameworks != nullptr) return 1;
  _frameworks = std::make_unique<VorHashSCMap>(nullptr);
  vor::VorQMAStream lines(file);
  while (char* const line = lines.NextLine()) AddDeclaration(line, file);
  return 0;
}

void VorFwModRespHelper::AddOrganisation(const char* line, const char* file) {
  const std::string_view code = CodeOf(line);
  if (code.empty()) {
    printf("# ERROR: Bad line in file %s: %s\n", file, line);
    return;
  }
  char key[kLongestCode + 1] = {};
  std::transform(code.begin(), code.end(), key, Upper);
  VorHashSCMap* const organisations = _organisations.get();
  if (Find(organisations, key) == nullptr) Add(organisations, key, Copy(line));
}

void VorFwModRespHelper::AddDeclaration(char* line, const char* file) {
  std::array<char*, kFields> fields;
  char* const responsible = FindFields(line, &fields) ? Behind("Resp:", fields[5]) : nullptr;
  if (responsible == nullptr || *responsible == '\0') {
    printf("# Error: Bad line in file (%s): %s\n", file, line);
    return;
  }
  ToUpper(responsible);
  for (std::size_t i = 1; i < kFields; ++i) fields[i][-1] = '\0';
  char* const owner = fields[3];
  char* const declared = fields[4];
  if (Behind("Fw:", declared) != nullptr) {
    AddFramework(declared, responsible, file);
  } else if (const char* const module = Behind("Mod:", declared)) {
    AddModule(owner + std::min(strlen(owner), kBeforeFramework), module, responsible, file);
  }
}

void VorFwModRespHelper::AddFramework(const char* field, const char* responsible,
                                      const char* file) {
  const char* const name = field + strlen("Fw:");
  if (FindFramework(name) != nullptr) {
    // The field with its prefix: readers of the message look for it so.
    printf("# Error: fw %s referenced multiple time in file %s\n", field, file);
    return;
  }
  Add(_frameworks.get(), name, new Framework(responsible));
}

void VorFwModRespHelper::AddModule(const char* framework, const char* module,
                                   const char* responsible, const char* file) {
  VorHashSCMap* const modules = ModulesOf(framework);
  if (modules == nullptr) {
    printf("# Error: fw %s not yet referenced for mod %s in file %s\n", framework, module, file);
  } else if (Find(modules, module) != nullptr) {
    printf("# Error: mod %s defined multiple time\n", module);
    printf("# Error: unable to add mod %s in fw %s for file %s\n", module, framework, file);
  } else {
    Add(modules, module, Copy(responsible));
  }
}

VorFwModRespHelper::Framework* VorFwModRespHelper::FindFramework(const char* name) const {
  return static_cast<Framework*>(Find(_frameworks.get(), name));
}

VorHashSCMap* VorFwModRespHelper::ModulesOf(const char* framework) const {
  Framework* const found = FindFramework(framework);
  return found == nullptr ? nullptr : &found->modules;
}

const char* VorFwModRespHelper::getFrameworkShortResponsible(const char* fw) const {
  const Framework* const found = FindFramework(fw);
  return found == nullptr ? nullptr : found->responsible;
}

const char* VorFwModRespHelper::getModuleShortResponsible(const char* fw, const char* mod) const {
  return static_cast<const char*>(Find(ModulesOf(fw), mod));
}

const char* VorFwModRespHelper::getFrameworkLongResponsible(const char* fw) const {
  return static_cast<const char*>(Find(_organisations.get(), getFrameworkShortResponsible(fw)));
}

const char* VorFwModRespHelper::getModuleLongResponsible(const char* fw, const char* mod) const {
  return static_cast<const char*>(Find(_organisations.get(), getModuleShortResponsible(fw, mod)));
}
