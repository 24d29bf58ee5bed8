#include "process/ChildPlan.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <paths.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace vor {
namespace {

constexpr char kShell[] = _PATH_BSHELL;
constexpr char kStandardPath[] = "/bin:/usr/bin";  // searched when PATH is not set

// By TAProcessOptions::Limit.
constexpr struct {
  decltype(RLIMIT_CPU) resource;
  const char* name;
} kLimits[] = {{RLIMIT_CPU, "processor seconds"}, {RLIMIT_AS, "memory bytes"},
               {RLIMIT_FSIZE, "file size bytes"}, {RLIMIT_NOFILE, "open files"},
               {RLIMIT_CORE, "core bytes"},       {RLIMIT_NPROC, "processes"}};
static_assert(std::size(kLimits) == TAProcessOptions::Processes + 1);

bool IsNamedPipe(const std::string& path) {
  struct stat info;
  return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISFIFO(info.st_mode);
}

// The paths that exec tries for \a program, in order, each with its NUL.
std::string PathsOf(std::string_view program, const char* searched) {
  std::string paths;
  if (program.empty()) return paths;
  if (program.find('/') != std::string_view::npos) return paths.append(program) + '\0';
  std::string_view directories = searched == nullptr ? kStandardPath : searched;
  for (;;) {
    const std::size_t end = directories.find(':');
    const std::string_view directory = directories.substr(0, end);
    if (directory.size() < PATH_MAX) {  // a longer one cannot exist; the search goes on
      paths += directory;
      if (!directory.empty()) paths += '/';  // an empty entry is the working directory
      paths.append(program) += '\0';
    }
    if (end == std::string_view::npos) return paths;
    directories.remove_prefix(end + 1);
  }
}

// open() for a child before its exec.  If no descriptor is free, it closes one that the exec would
// close anyway; the child has its own table of descriptors.
int OpenInChild(const char* path, int flags) {
  const int fd = open(path, flags, 0666);
  if (fd >= 0 || errno != EMFILE) return fd;
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  for (int other = STDERR_FILENO + 1; static_cast<rlim_t>(other) < limit.rlim_cur; ++other) {
    const int closeOnExec = fcntl(other, F_GETFD);
    if (closeOnExec < 0 || (closeOnExec & FD_CLOEXEC) == 0) continue;
    close(other);
    return open(path, flags, 0666);
  }
  errno = EMFILE;
  return -1;
}

int Duplicate(int fd, int target) {
  return dup2(fd, target) < 0 ? errno : 0;
}

bool AreSameFile(int left, int right) {
  struct stat one, other;
  return fstat(left, &one) == 0 && fstat(right, &other) == 0 && one.st_dev == other.st_dev &&
         one.st_ino == other.st_ino;
}

bool HasNul(std::string_view text) {
  return text.find('\0') != std::string_view::npos;
}

std::string UpToNul(std::string text) {
  return text.substr(0, text.find('\0'));
}

bool IsNameOfVariable(std::string_view name) {
  return !name.empty() && !HasNul(name) && name.find('=') == std::string_view::npos;
}

}  // namespace

ChildPlan::ChildPlan(ChildRequest& request)
    : _settings(request.settings),
      _entry(request.entry),
      _outputPipe(request.outputPipe),
      _environment(request.settings.variables, request.entry.variable),
      _arguments(std::move(request.arguments)) {
  PlanLimits();
  if (_arguments.empty()) return;
  _paths = PathsOf(_arguments.front().c_str(), _environment.Find("PATH"));  // up to a NUL, as exec
  _shell.reserve(_arguments.size() + 2);
  _shell.push_back(const_cast<char*>(kShell));
  for (std::string& argument : _arguments) _shell.push_back(argument.data());
  _shell.push_back(nullptr);
}

// A program that handles SIGXCPU gets one more second to end.
void ChildPlan::PlanLimits() {
  for (std::size_t limit = 0; limit < std::size(_limits); ++limit) {
    if (!_settings.limits[limit].has_value()) continue;
    const rlim_t value = static_cast<rlim_t>(*_settings.limits[limit]);
    _limits[limit] = {value, value};
    if (limit != TAProcessOptions::ProcessorSeconds) continue;
    rlimit present = {};
    getrlimit(RLIMIT_CPU, &present);
    _limits[limit]->rlim_max = std::max(value, std::min(value + 1, present.rlim_max));
  }
}

bool ChildPlan::MayWaitForParent() const {
  return IsNamedPipe(_settings.output) || IsNamedPipe(_settings.errorOutput) ||
         IsNamedPipe(_settings.input);
}

ChildPlan::Failure ChildPlan::Run() {
  const Failure failure = Prepare();
  return failure.error != 0 ? failure : Failure{Execute(), kExec};
}

// The files are opened from the old directory.  The limits come last, because they hold for this
// code, too.
ChildPlan::Failure ChildPlan::Prepare() const {
  if (const int error = EnterGroup(); error != 0) return {error, kGroup};
  if (const Failure failure = Redirect(); failure.error != 0) return failure;
  if (!_settings.directory.empty() && chdir(_settings.directory.c_str()) != 0) {
    return {errno, kDirectory};
  }
  if (_settings.niceness.has_value() && setpriority(PRIO_PROCESS, 0, *_settings.niceness) != 0) {
    return {errno, kNiceness};
  }
  for (std::size_t limit = 0; limit < std::size(_limits); ++limit) {
    if (!_limits[limit].has_value()) continue;
    if (setrlimit(kLimits[limit].resource, &*_limits[limit]) != 0) {
      return {errno, kLimit + static_cast<int>(limit)};
    }
  }
  return {};
}

int ChildPlan::EnterGroup() const {
  int result = 0;
  if (_settings.group == TAProcessOptions::OwnSession) result = setsid();
  if (_settings.group == TAProcessOptions::OwnGroup) result = setpgid(0, 0);
  const int error = result < 0 ? errno : 0;
  _entry.Apply();
  return error;
}

// Opens a file as the descriptor \a target.  Returns 0 or errno.
int ChildPlan::OpenAs(int target, const std::string& path, int flags) const {
  // A session without a terminal must not get one by opening it.
  const int fd = OpenInChild(path.c_str(), flags | O_NOCTTY);
  if (fd < 0) return errno;
  if (fd == target) return 0;
  const int error = Duplicate(fd, target);
  close(fd);
  return error;
}

// Descriptors 0 to 2 may be closed in the parent, so a file may be opened as the very one that it
// is meant for, or as another one of the three.
ChildPlan::Failure ChildPlan::Redirect() const {
  const ChildSettings& files = _settings;
  const int flags = O_WRONLY | O_CREAT | (files.append ? O_APPEND : O_TRUNC);
  int error = 0;
  bool isRedirected = false;
  if (!files.output.empty()) {
    error = OpenAs(STDOUT_FILENO, files.output, flags);
    if (error != 0 && files.filesRequired) return {error, kOutput};
    isRedirected = error == 0;
  }
  if (!isRedirected && _outputPipe >= 0) {
    error = Duplicate(_outputPipe, STDOUT_FILENO);
    if (error != 0) return {error, kOutput};
    isRedirected = true;
  }
  bool isApart = false;
  if (!files.errorOutput.empty() && files.errorOutput != files.output) {
    error = OpenAs(STDERR_FILENO, files.errorOutput, flags);
    if (error != 0 && files.filesRequired) return {error, kErrorOutput};
    // Opened twice, a file would lose what the other stream overwrites.
    isApart = error == 0 && !(isRedirected && AreSameFile(STDOUT_FILENO, STDERR_FILENO));
  }
  if (isRedirected && !isApart) {
    error = Duplicate(STDOUT_FILENO, STDERR_FILENO);
    if (error != 0) return {error, kErrorOutput};
  }
  if (files.input.empty()) return {};
  error = OpenAs(STDIN_FILENO, files.input, O_RDONLY);
  return error != 0 && files.filesRequired ? Failure{error, kInput} : Failure();
}

// Returns with errno set if \a path cannot be run.  A file that is no program of the system is a
// script for the shell.
void ChildPlan::ExecuteOne(char* path) {
  char* const* const environment = _environment.Get();
  execve(path, _shell.data() + 1, environment);
  if (errno != ENOEXEC) return;
  char* const program = _shell[1];
  _shell[1] = path;
  execve(kShell, _shell.data(), environment);
  _shell[1] = program;
}

// Returns the errno.  If a program was found that must not be run, that is the reason of the
// failure, even if the search continues.  A directory of PATH that must not be searched is not.
int ChildPlan::Execute() {
  int error = ENOENT;
  struct stat info;
  char* const end = _paths.data() + _paths.size();
  const bool isOnly = strlen(_paths.c_str()) + 1 == _paths.size();
  for (char* path = _paths.data(); path < end; path += strlen(path) + 1) {
    ExecuteOne(path);
    switch (errno) {
      case EACCES:
        if (isOnly || stat(path, &info) == 0) error = EACCES;
        break;
      case ENOENT:
      case ENOTDIR:
      case ENODEV:
      case ESTALE:
      case ETIMEDOUT:
        break;  // another directory may have it
      default:
        return errno;
    }
  }
  return error;
}

std::string ChildPlan::NameOf(int step, const ChildSettings& settings) {
  switch (step) {
    case kGroup:
      return settings.group == TAProcessOptions::OwnSession ? "session" : "process group";
    case kOutput:
      return "output " + settings.output;
    case kErrorOutput:
      return "error output " +
             (settings.errorOutput.empty() ? settings.output : settings.errorOutput);
    case kInput:
      return "input " + settings.input;
    case kDirectory:
      return "directory " + settings.directory;
    case kNiceness:
      return "niceness " + std::to_string(settings.niceness.value_or(0));
    default:
      break;
  }
  if (step < kLimit || step >= kExec) return "";
  const int limit = step - kLimit;
  return std::string("limit of ") + kLimits[limit].name + " " +
         std::to_string(settings.limits[limit].value_or(0));
}

StartFailure FindFault(const ChildRequest& request) {
  const ChildSettings& settings = request.settings;
  if (request.arguments.empty()) return {EINVAL, "empty command"};
  for (const std::string& argument : request.arguments) {
    if (HasNul(argument)) return {EINVAL, UpToNul("argument " + argument)};
  }
  for (const auto& [kind, name, value] : settings.variables) {
    if (kind == VariableChange::kUnsetAll) continue;
    if (!IsNameOfVariable(name) || HasNul(value)) {
      return {EINVAL, UpToNul("variable " + name)};
    }
  }
  const std::pair<int, const std::string&> names[] = {
      {ChildPlan::kDirectory, settings.directory},
      {ChildPlan::kInput, settings.input},
      {ChildPlan::kOutput, settings.output},
      {ChildPlan::kErrorOutput, settings.errorOutput}};
  for (const auto& [step, name] : names) {
    if (HasNul(name)) return {EINVAL, UpToNul(ChildPlan::NameOf(step, settings))};
  }
  return {};
}

}  // namespace vor
