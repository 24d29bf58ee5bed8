#include "sourcefiles/VorFwModRespHelper.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/AsciiCase.h"
#include "base/OwnedText.h"
#include "base/VorUnicodeString.h"
#include "containers/VorHashSCMap.h"
#include "foundation/Tracing.h"
#include "sourcefiles/VorQMAStream.h"

namespace {

constexpr std::size_t kShortestOrganisation = 8;  // bytes of a line
constexpr std::size_t kLongestCode = 3;           // bytes
constexpr std::size_t kFields = 6;                // of a declaration
constexpr std::size_t kBeforeFramework = 7;  // bytes of the fourth field that mean nothing here

void ToUpper(char* text) {
  for (; *text != '\0'; ++text) *text = vor::AsciiUpper(*text);
}

vor::OwnedText Copy(const char* text) {
  vor::OwnedText copy(strdup(text));
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

// Deletes the values of a map, each of which Owner takes.
template <typename Owner>
void DeleteValues(VorHashSCMap* map) {
  if (map == nullptr) return;
  const std::unique_ptr<VorMapIterator> walk(map->getIterator());
  while (walk != nullptr && walk->next() != 0) {
    const Owner owner(static_cast<typename Owner::pointer>(walk->getValue()));
  }
}

bool IsAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

bool IsPrintable(char byte) {
  return byte >= ' ' && byte < 0x7F;
}

void AppendEscapes(std::string_view bytes, std::string* shown) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    const char number[] = {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15], '\0'};
    *shown += c == '\t' ? "\\t" : c == '\r' ? "\\r" : number;
  }
}

// Escapes the characters that a terminal may interpret instead of showing them: U+0080 to U+009F,
// and the same numbers as bytes that are not valid UTF-8, which are code points from U+DC80 up.
void AppendBeyondAscii(const std::string& text, std::string* shown) {
  const VorUnicodeString characters(text.c_str());
  std::size_t start = 0;
  for (int i = 0; i < characters.GetLengthInChar(); ++i) {
    const char32_t c = characters.GetCodePoints()[i];
    const bool isRaw = c >= 0xDC80 && c < 0xDD00;
    const std::size_t size = isRaw ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    if (c < 0xA0 || (isRaw && c < 0xDCA0)) {
      AppendEscapes(std::string_view(text).substr(start, size), shown);
    } else {
      shown->append(text, start, size);
    }
    start += size;
  }
}

// A text from a file as it is printed: control characters as \t, \r or \xHH, all else unchanged.
std::string Shown(const char* text) {
  std::string shown;
  for (const char* run = text; *run != '\0';) {
    const char* end = run;
    while (IsPrintable(*end)) ++end;
    shown.append(run, end);
    for (run = end; *end != '\0' && IsAscii(*end) && !IsPrintable(*end);) ++end;
    AppendEscapes({run, end}, &shown);
    for (run = end; !IsAscii(*end);) ++end;
    if (run != end) AppendBeyondAscii({run, end}, &shown);
    run = end;
  }
  return shown;
}

// The rest of text after prefix; null if text does not start with prefix.
char* After(const char* prefix, char* text) {
  const std::size_t length = strlen(prefix);
  return strncmp(text, prefix, length) == 0 ? text + length : nullptr;
}

// The starts of the fields of a declaration; the last field is the rest.  False if there are too
// few.
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
  ~Framework() { DeleteValues<vor::OwnedText>(&modules); }

  const vor::OwnedText responsible;
  VorHashSCMap modules{nullptr};  // the short responsible of each module
};

VorFwModRespHelper::VorFwModRespHelper() noexcept = default;

VorFwModRespHelper::~VorFwModRespHelper() {
  DeleteValues<std::unique_ptr<Framework>>(_frameworks.get());
  DeleteValues<vor::OwnedText>(_organisations.get());
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
  while (const char* const line = lines.NextLine()) _addOrganisation(line, file);
  return 0;
}

int VorFwModRespHelper::parseKVRFile(const char* file) noexcept {
  if (_frameworks != nullptr) return 1;
  _frameworks = std::make_unique<VorHashSCMap>(nullptr);
  vor::VorQMAStream lines(file);
  while (char* const line = lines.NextLine()) _addDeclaration(line, file);
  return 0;
}

void VorFwModRespHelper::_addOrganisation(const char* line, const char* file) {
  const std::string_view code = CodeOf(line);
  if (code.empty()) {
    printf("# ERROR: Bad line in file %s: %s\n", Shown(file).c_str(), Shown(line).c_str());
    return;
  }
  char key[kLongestCode + 1] = {};
  for (std::size_t i = 0; i < code.size() && i < kLongestCode; ++i) {
    key[i] = vor::AsciiUpper(code[i]);
  }
  VorHashSCMap* const organisations = _organisations.get();
  if (Find(organisations, key) == nullptr) Add(organisations, key, Copy(line).release());
}

void VorFwModRespHelper::_addDeclaration(char* line, const char* file) {
  std::array<char*, kFields> fields;
  char* const responsible = FindFields(line, &fields) ? After("Resp:", fields[5]) : nullptr;
  if (responsible == nullptr || *responsible == '\0') {
    printf("# Error: Bad line in file (%s): %s\n", Shown(file).c_str(), Shown(line).c_str());
    return;
  }
  ToUpper(responsible);
  for (std::size_t i = 1; i < kFields; ++i) fields[i][-1] = '\0';
  char* const owner = fields[3];
  char* const declared = fields[4];
  if (After("Fw:", declared) != nullptr) {
    _addFramework(declared, responsible, file);
  } else if (const char* const module = After("Mod:", declared)) {
    _addModule(owner + std::min(strlen(owner), kBeforeFramework), module, responsible, file);
  }
}

void VorFwModRespHelper::_addFramework(const char* field, const char* responsible,
                                       const char* file) {
  const char* const name = field + strlen("Fw:");
  if (_findFramework(name) != nullptr) {
    // The field is shown with its prefix: scripts that read the message expect it.
    printf("# Error: fw %s referenced multiple time in file %s\n", Shown(field).c_str(),
           Shown(file).c_str());
    return;
  }
  Add(_frameworks.get(), name, std::make_unique<Framework>(responsible).release());
}

void VorFwModRespHelper::_addModule(const char* framework, const char* module,
                                    const char* responsible, const char* file) {
  VorHashSCMap* const modules = _modulesOf(framework);
  if (modules == nullptr) {
    printf("# Error: fw %s not yet referenced for mod %s in file %s\n", Shown(framework).c_str(),
           Shown(module).c_str(), Shown(file).c_str());
  } else if (Find(modules, module) != nullptr) {
    printf("# Error: mod %s defined multiple time\n", Shown(module).c_str());
    printf("# Error: unable to add mod %s in fw %s for file %s\n", Shown(module).c_str(),
           Shown(framework).c_str(), Shown(file).c_str());
  } else {
    Add(modules, module, Copy(responsible).release());
  }
}

VorFwModRespHelper::Framework* VorFwModRespHelper::_findFramework(const char* name) const {
  return static_cast<Framework*>(Find(_frameworks.get(), name));
}

VorHashSCMap* VorFwModRespHelper::_modulesOf(const char* framework) const {
  Framework* const found = _findFramework(framework);
  return found == nullptr ? nullptr : &found->modules;
}

const char* VorFwModRespHelper::getFrameworkShortResponsible(const char* fw) const {
  const Framework* const found = _findFramework(fw);
  return found == nullptr ? nullptr : found->responsible.get();
}

const char* VorFwModRespHelper::getModuleShortResponsible(const char* fw, const char* mod) const {
  return static_cast<const char*>(Find(_modulesOf(fw), mod));
}

const char* VorFwModRespHelper::getFrameworkLongResponsible(const char* fw) const {
  return static_cast<const char*>(Find(_organisations.get(), getFrameworkShortResponsible(fw)));
}

const char* VorFwModRespHelper::getModuleLongResponsible(const char* fw, const char* mod) const {
  return static_cast<const char*>(Find(_organisations.get(), getModuleShortResponsible(fw, mod)));
}
