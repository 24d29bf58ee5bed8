#ifndef VOR_PROCESS_CHILDSETTINGS_H
#define VOR_PROCESS_CHILDSETTINGS_H

#include <optional>
#include <string>
#include <vector>

#include "process/TAProcessOptions.h"

namespace vor {

/// One change of an environment.
struct VariableChange {
  enum Kind { kSet, kUnset, kUnsetAll } kind;
  std::string name;   // empty for kUnsetAll
  std::string value;  // for kSet
};

/// The settings of a TAProcessOptions.  An empty file or directory is inherited.
struct ChildSettings {
  std::string directory;
  std::vector<VariableChange> variables;  // in the order of the calls
  std::string input;
  std::string output;
  std::string errorOutput;  // empty: as the output
  bool append = false;
  bool filesRequired = true;
  std::optional<long long> limits[TAProcessOptions::Processes + 1];  // by TAProcessOptions::Limit
  std::optional<int> niceness;
  TAProcessOptions::Group group = TAProcessOptions::Inherited;
};

}  // namespace vor

#endif  // VOR_PROCESS_CHILDSETTINGS_H
