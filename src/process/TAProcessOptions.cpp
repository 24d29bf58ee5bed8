#include "process/TAProcessOptions.h"

#include "process/ChildSettings.h"

TAProcessOptions::TAProcessOptions() : _settings(std::make_unique<vor::ChildSettings>()) {}

TAProcessOptions::TAProcessOptions(const TAProcessOptions& other)
    : _settings(std::make_unique<vor::ChildSettings>(*other._settings)) {}

TAProcessOptions& TAProcessOptions::operator=(const TAProcessOptions& other) {
  *_settings = *other._settings;
  return *this;
}

TAProcessOptions::~TAProcessOptions() = default;
