#ifndef VOR_PROCESS_CHILDENVIRONMENT_H
#define VOR_PROCESS_CHILDENVIRONMENT_H

#include <string>
#include <string_view>
#include <vector>

#include "process/ChildSettings.h"

namespace vor {

/// The environment of a child: that of this process with some changes.
///
/// Keeps pointers to the strings of this process and of \a marked, no copies of them.
class ChildEnvironment {
 public:
  /// Applies \a changes in their order, then sets \a marked, "NAME=value", unless it is null.
  ChildEnvironment(const std::vector<VariableChange>& changes, const char* marked);
  ChildEnvironment(const ChildEnvironment&) = delete;
  ChildEnvironment& operator=(const ChildEnvironment&) = delete;

  /// For exec.  Async-signal-safe.
  char* const* Get() const;

  /// Null if there is no such variable.
  const char* Find(std::string_view name) const;

 private:
  void Remove(std::string_view name);
  void Set(const char* variable, std::string_view name);

  bool _isChanged;
  std::vector<std::string> _own;  // "NAME=value" of the changes
  std::vector<char*> _variables;  // if changed: then a null
};

}  // namespace vor

#endif  // VOR_PROCESS_CHILDENVIRONMENT_H
