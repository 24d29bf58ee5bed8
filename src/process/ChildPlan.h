#ifndef VOR_PROCESS_CHILDPLAN_H
#define VOR_PROCESS_CHILDPLAN_H

#include <sys/resource.h>

#include <optional>
#include <string>
#include <vector>

#include "process/ChildEnvironment.h"
#include "process/ChildStart.h"

namespace vor {

/// What a child does from the fork to its exec, prepared before the fork.
///
/// The request must outlive the plan; its arguments are moved from.
class ChildPlan {
 public:
  /// The steps that can fail.
  enum Step : int {
    kGroup,
    kOutput,
    kErrorOutput,
    kInput,
    kDirectory,
    kNiceness,
    kLimit,  // plus a TAProcessOptions::Limit
    kExec = kLimit + TAProcessOptions::Processes + 1
  };

  /// A step that failed, in words that a child can pass to its parent.
  struct Failure {
    int error = 0;  ///< errno; 0: none
    int step = kExec;
  };

  explicit ChildPlan(ChildRequest& request);
  ChildPlan(const ChildPlan&) = delete;
  ChildPlan& operator=(const ChildPlan&) = delete;

  /// Whether one of the files may block until another process, perhaps the parent, opens it.
  bool MayWaitForParent() const;

  /// Becomes the program, or returns what failed.  Async-signal-safe; called in the child.
  Failure Run();

  /// The setting that \a step applies, and its value; empty for kExec.
  static std::string NameOf(int step, const ChildSettings& settings);

 private:
  void PlanLimits();
  Failure Prepare() const;
  int EnterGroup() const;
  Failure Redirect() const;
  int OpenAs(int target, const std::string& path, int flags) const;
  int Execute();
  void ExecuteOne(char* path);

  const ChildSettings& _settings;
  const Container::Entry _entry;
  const int _outputPipe;
  const ChildEnvironment _environment;
  std::vector<std::string> _arguments;
  std::string _paths;         // to try, each ended by a NUL
  std::vector<char*> _shell;  // the shell, then the arguments with the program first, then null
  std::optional<rlimit> _limits[TAProcessOptions::Processes + 1];
};

/// What a start with options refuses before the fork: an empty command, and texts that exec would
/// cut or misread.
StartFailure FindFault(const ChildRequest& request);

}  // namespace vor

#endif  // VOR_PROCESS_CHILDPLAN_H
