#include "process/TAProcessOptions.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "process/ChildSettings.h"

namespace {

constexpr int kLeastNiceness = -20;
constexpr int kMostNiceness = 19;

std::string TextOf(const VorString& text) {
  return std::string(text.View());
}

}  // namespace

TAProcessOptions::TAProcessOptions() : _settings(std::make_unique<vor::ChildSettings>()) {}

TAProcessOptions::TAProcessOptions(const TAProcessOptions& other)
    : _settings(std::make_unique<vor::ChildSettings>(*other._settings)) {}

TAProcessOptions& TAProcessOptions::operator=(const TAProcessOptions& other) {
  *_settings = *other._settings;
  return *this;
}

TAProcessOptions::~TAProcessOptions() = default;

TAProcessOptions& TAProcessOptions::SetDirectory(const VorString& directory) {
  _settings->directory = directory.View();
  return *this;
}

TAProcessOptions& TAProcessOptions::SetVariable(const VorString& name, const VorString& value) {
  _settings->variables.push_back({vor::VariableChange::kSet, TextOf(name), TextOf(value)});
  return *this;
}

TAProcessOptions& TAProcessOptions::UnsetVariable(const VorString& name) {
  _settings->variables.push_back({vor::VariableChange::kUnset, TextOf(name), ""});
  return *this;
}

TAProcessOptions& TAProcessOptions::UnsetAllVariables() {
  _settings->variables.assign(1, {vor::VariableChange::kUnsetAll, "", ""});
  return *this;
}

TAProcessOptions& TAProcessOptions::SetInput(const VorString& file) {
  _settings->input = file.View();
  return *this;
}

TAProcessOptions& TAProcessOptions::SetOutput(const VorString& file) {
  _settings->output = file.View();
  return *this;
}

TAProcessOptions& TAProcessOptions::SetErrorOutput(const VorString& file) {
  _settings->errorOutput = file.View();
  return *this;
}

TAProcessOptions& TAProcessOptions::SetAppend(bool append) {
  _settings->append = append;
  return *this;
}

TAProcessOptions& TAProcessOptions::SetFilesRequired(bool required) {
  _settings->filesRequired = required;
  return *this;
}

TAProcessOptions& TAProcessOptions::SetLimit(Limit limit, long long value) {
  const auto index = static_cast<std::size_t>(limit);
  if (index >= std::size(_settings->limits)) return *this;
  _settings->limits[index].reset();
  if (value >= 0) _settings->limits[index] = value;
  return *this;
}

TAProcessOptions& TAProcessOptions::SetNiceness(int niceness) {
  _settings->niceness = std::clamp(niceness, kLeastNiceness, kMostNiceness);
  return *this;
}

TAProcessOptions& TAProcessOptions::SetGroup(Group group) {
  _settings->group = group;
  return *this;
}
