#ifndef VOR_PROCESS_TAPROCESSOPTIONS_H
#define VOR_PROCESS_TAPROCESSOPTIONS_H

#include <memory>

#include "../base/Export.h"
#include "../base/VorString.h"

namespace vor {
struct ChildSettings;
}

/// How a command is started: directory, environment, files, limits, priority, process group.
///
/// A value that may be used for many starts.  Each call returns the object:
///
///     process.Start("make check",
///                   TAProcessOptions().SetDirectory("build").SetOutput("check.log"));
///
/// What is not set is inherited from this process.  If a setting cannot be applied, the command is
/// not run: its end is NotStarted, and TAProcessEnd::object names the setting.
///
/// Ownership: keeps copies.
/// Threads:   distinct objects are independent; several threads may read one.
class VOR_API TAProcessOptions {
 public:
  /// The process group that a command starts in.
  enum Group : int {
    Inherited,
    OwnGroup,   ///< a new process group in the session of this process
    OwnSession  ///< a new session without a terminal
  };

  /// What a limit limits, for the command and everything that it starts, each for itself.
  enum Limit : int {
    ProcessorSeconds,  ///< then SIGXCPU, and SIGKILL one second later
    MemoryBytes,       ///< of address space; then allocations fail
    FileSizeBytes,     ///< of a file that is written; then SIGXFSZ
    OpenFiles,         ///< descriptors of one process
    CoreBytes,         ///< of a core file; 0 for none
    Processes          ///< processes and threads of the user, no matter who started them
  };

  TAProcessOptions();
  TAProcessOptions(const TAProcessOptions& other);
  TAProcessOptions& operator=(const TAProcessOptions& other);
  ~TAProcessOptions();

  /// The working directory.  Relative paths of the program and in PATH start there; those of the
  /// files below start at the working directory of this process.
  TAProcessOptions& SetDirectory(const VorString& directory);

  // The environment: that of this process at the time of the start, changed by these calls in their
  // order.  The start reads it like getenv, so no other thread must change it at that moment.  The
  // program is searched in the PATH of the resulting environment, or in /bin:/usr/bin if that has
  // none.

  /// Adds or replaces a variable.  A name that is empty or contains "=" or a NUL is a failure of
  /// the start (EINVAL), and so is a NUL in any text here.
  TAProcessOptions& SetVariable(const VorString& name, const VorString& value);
  TAProcessOptions& UnsetVariable(const VorString& name);
  /// Removes all variables, also those that were set here before.
  TAProcessOptions& UnsetAllVariables();

  /// Standard input; "/dev/null" for none.
  TAProcessOptions& SetInput(const VorString& file);
  /// Standard output and, unless SetErrorOutput names another file, standard error.  A file that
  /// does not exist is created.
  TAProcessOptions& SetOutput(const VorString& file);
  TAProcessOptions& SetErrorOutput(const VorString& file);
  /// Whether output is appended to the files; otherwise, by default, they are truncated.
  TAProcessOptions& SetAppend(bool append);
  /// Whether a file that cannot be opened is a failure of the start, as it is by default.
  /// Otherwise the command starts as if that file was not set.
  TAProcessOptions& SetFilesRequired(bool required);

  /// Limits the command; below 0 removes a limit that was set here.  A limit above the hard limit
  /// of this process is a failure of the start (EPERM) unless this process is privileged.
  TAProcessOptions& SetLimit(Limit limit, long long value);

  /// The niceness, -20 (favoured) to 19; values outside count as the nearest one.  A value below
  /// that of this process needs privileges.
  TAProcessOptions& SetNiceness(int niceness);

  TAProcessOptions& SetGroup(Group group);

  /// For the library's own use.
  const vor::ChildSettings& Settings() const { return *_settings; }

 private:
  std::unique_ptr<vor::ChildSettings> _settings;
};

#endif  // VOR_PROCESS_TAPROCESSOPTIONS_H
