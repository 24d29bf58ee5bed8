#include "process/ChildEnvironment.h"

#include <unistd.h>

namespace vor {
namespace {

bool IsNamed(const char* variable, std::string_view name) {
  const std::string_view text = variable;
  return text.size() > name.size() && text[name.size()] == '=' && text.starts_with(name);
}

}  // namespace

ChildEnvironment::ChildEnvironment(const std::vector<VariableChange>& changes, const char* marked)
    : _isChanged(!changes.empty() || marked != nullptr) {
  if (!_isChanged) return;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    _variables.push_back(*variable);
  }
  _own.reserve(changes.size());  // so that the texts stay where they are
  for (const auto& [kind, name, value] : changes) {
    switch (kind) {
      case VariableChange::kSet:
        Set(_own.emplace_back(name + '=' + value).c_str(), name);
        break;
      case VariableChange::kUnset:
        Remove(name);
        break;
      case VariableChange::kUnsetAll:
        _variables.clear();
        break;
    }
  }
  if (marked != nullptr)
    Set(marked, std::string_view(marked).substr(0, std::string_view(marked).find('=')));
  _variables.push_back(nullptr);
}

char* const* ChildEnvironment::Get() const {
  return _isChanged ? _variables.data() : environ;
}

const char* ChildEnvironment::Find(std::string_view name) const {
  char* const* variable = Get();
  for (; variable != nullptr && *variable != nullptr; ++variable) {
    if (IsNamed(*variable, name)) return *variable + name.size() + 1;
  }
  return nullptr;
}

void ChildEnvironment::Remove(std::string_view name) {
  std::erase_if(_variables, [&](const char* variable) { return IsNamed(variable, name); });
}

void ChildEnvironment::Set(const char* variable, std::string_view name) {
  Remove(name);
  _variables.push_back(const_cast<char*>(variable));
}

}  // namespace vor
