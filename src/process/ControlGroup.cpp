#include "process/ControlGroup.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <sstream>
#include <string_view>
#include <vector>

#include "base/ForkSafeLock.h"
#include "base/NeverDestroyed.h"
#include "process/MarkedProcesses.h"
#include "process/ReserveDescriptors.h"

namespace vor {
namespace {

constexpr std::string_view kPrefix = "/vor-";  // of the name of a group, before a UniqueNumber

// Where this process may make groups.
struct Place {
  std::string directory;
  std::string path;  // the same as in /proc/self/cgroup; "/" is ""
};

constinit ForkSafeMutex mutex(ForkStage::kRegistry);
const ForkRegistration registration(mutex);
// Under mutex: the place, once it was looked for; the directories that had members when they were
// no longer needed.
constinit bool isSearched = false;
constinit NeverDestroyed<std::optional<Place>> placeFound;
constinit NeverDestroyed<std::vector<std::string>> leftOver;

bool ReadFile(const std::string& path, std::string& text) {
  return WithReserve([&] {
    text.clear();
    const FileDescriptor file = OpenFile(path.c_str(), O_RDONLY);
    return file.IsOpen() && ReadToEnd(file.Get(), text);
  });
}

// The path in \a text, the content of a file /proc/PID/cgroup.
std::optional<std::string> UnifiedPath(const std::string& text) {
  constexpr std::string_view kUnified = "0::";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(kUnified, 0) == 0) return line.substr(kUnified.size());
  }
  return std::nullopt;
}

// A field of mountinfo: a blank in a name is "\040".
std::string Unescaped(std::string_view field) {
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    int code = 0;
    const char* const digits = field.data() + i + 1;
    if (field[i] == '\\' && i + 3 < field.size() &&
        std::from_chars(digits, digits + 3, code, 8).ptr == digits + 3) {
      text += static_cast<char>(code);
      i += 3;
    } else {
      text += field[i];
    }
  }
  return text;
}

// The directory of the group \a path on the mount that \a line of mountinfo describes; none if the
// group is not visible there.
std::optional<std::string> DirectoryOn(const std::string& line, const std::string& path) {
  const std::size_t type = line.find(" - cgroup2 ");
  if (type == std::string::npos) return std::nullopt;
  std::istringstream fields(line);
  std::string skipped, root, point;
  fields >> skipped >> skipped >> skipped >> root >> point;
  root = Unescaped(root);
  if (root == "/") root.clear();
  const bool isBelow =
      path.rfind(root, 0) == 0 && (path.size() == root.size() || path[root.size()] == '/');
  if (!isBelow) return std::nullopt;
  return Unescaped(point) + path.substr(root.size());
}

// A group may be hidden by another mount, or be read-only for this user.
bool IsWritableGroup(const std::string& directory) {
  struct statfs info;
  return statfs(directory.c_str(), &info) == 0 && info.f_type == CGROUP2_SUPER_MAGIC &&
         faccessat(AT_FDCWD, directory.c_str(), W_OK, AT_EACCESS) == 0 &&
         faccessat(AT_FDCWD, (directory + "/cgroup.procs").c_str(), W_OK, AT_EACCESS) == 0;
}

std::optional<Place> SearchPlace() {
  std::string text;
  if (!ReadFile("/proc/self/cgroup", text)) return std::nullopt;
  std::optional<std::string> path = UnifiedPath(text);
  if (!path || path->find("/..") != std::string::npos) return std::nullopt;
  if (*path == "/") path->clear();
  if (!ReadFile("/proc/self/mountinfo", text)) return std::nullopt;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const std::optional<std::string> directory = DirectoryOn(line, *path);
    if (directory && IsWritableGroup(*directory)) return Place{*directory, *path};
  }
  return std::nullopt;
}

struct DirCloser {
  void operator()(DIR* dir) const { closedir(dir); }
};

// The groups directly below \a directory.
std::vector<std::string> GroupsBelow(const std::string& directory) {
  std::vector<std::string> groups;
  WithReserve([&] {
    FileDescriptor file = OpenFile(directory.c_str(), O_RDONLY | O_DIRECTORY);
    const std::unique_ptr<DIR, DirCloser> dir(file.IsOpen() ? fdopendir(file.Get()) : nullptr);
    if (dir == nullptr) return false;
    file.Release();
    while (const dirent* entry = readdir(dir.get())) {
      const std::string_view name = entry->d_name;
      if (entry->d_type != DT_DIR || name == "." || name == "..") continue;
      groups.push_back(directory + "/" + entry->d_name);
    }
    return true;
  });
  return groups;
}

// Removes a group and those below it.  False if one of them has members.
bool RemoveGroup(const std::string& directory) {
  if (rmdir(directory.c_str()) == 0 || errno == ENOENT) return true;
  for (const std::string& group : GroupsBelow(directory)) {
    if (!RemoveGroup(group)) return false;
  }
  return rmdir(directory.c_str()) == 0;
}

// Under mutex.
void RemoveLeftOver() {
  std::erase_if(leftOver.object, RemoveGroup);
}

const struct ExitSweep {
  ~ExitSweep() {
    const std::lock_guard guard(mutex);
    RemoveLeftOver();
  }
} exitSweep;

// Removes what processes have left in \a place that were killed; only groups without members.
void RemoveDeserted(const Place& place) {
  const std::size_t prefix = place.directory.size() + kPrefix.size();
  for (const std::string& group : GroupsBelow(place.directory)) {
    if (group.compare(place.directory.size(), kPrefix.size(), kPrefix) != 0) continue;
    std::uint64_t number = 0;
    std::from_chars(group.data() + prefix, group.data() + group.size(), number);
    const pid_t owner = ProcessOf(number);
    if (owner > 0 && kill(owner, 0) != 0 && errno == ESRCH) rmdir(group.c_str());
  }
}

void AddMembers(const std::string& directory, std::unordered_set<int>& members) {
  std::string text;
  ReadFile(directory + "/cgroup.procs", text);
  std::istringstream numbers(text);
  for (int pid; numbers >> pid;) members.insert(pid);
  for (const std::string& group : GroupsBelow(directory)) AddMembers(group, members);
}

bool IsPopulatedIn(int events) {
  char text[256];
  const ssize_t count = pread(events, text, sizeof text, 0);
  if (count <= 0) return false;  // it was removed
  return std::string_view(text, static_cast<std::size_t>(count)).find("populated 1") !=
         std::string_view::npos;
}

}  // namespace

std::unique_ptr<ControlGroup> ControlGroup::Make() {
  const std::lock_guard guard(mutex);
  std::optional<Place>& place = placeFound.object;
  if (!isSearched) {
    place = SearchPlace();
    if (place) RemoveDeserted(*place);
  }
  isSearched = true;
  if (!place) return nullptr;
  RemoveLeftOver();
  const std::string name = std::string(kPrefix) + std::to_string(UniqueNumber());
  const std::string directory = place->directory + name;
  if (mkdir(directory.c_str(), 0755) != 0) {
    isSearched = errno != ENOENT;  // this process has another group now
    return nullptr;
  }
  FileDescriptor entry = OpenFile((directory + "/cgroup.procs").c_str(), O_WRONLY);
  if (!entry.IsOpen() || access((directory + "/cgroup.kill").c_str(), F_OK) != 0) {
    rmdir(directory.c_str());
    return nullptr;
  }
  return std::unique_ptr<ControlGroup>(
      new ControlGroup(directory, place->path + name, std::move(entry)));
}

bool ControlGroup::IsPossible() {
  return Make() != nullptr;
}

ControlGroup::ControlGroup(std::string directory, std::string path, FileDescriptor entry)
    : _owner(getpid()),
      _directory(std::move(directory)),
      _path(std::move(path)),
      _entry(std::move(entry)) {}

ControlGroup::~ControlGroup() {
  if (getpid() != _owner) return;
  const std::lock_guard guard(mutex);
  RemoveLeftOver();
  if (!RemoveGroup(_directory)) leftOver.object.push_back(_directory);
}

std::optional<bool> ControlGroup::Holds(pid_t pid) const {
  std::string text;
  if (!ReadFile("/proc/" + std::to_string(pid) + "/cgroup", text)) return std::nullopt;
  const std::string path = UnifiedPath(text).value_or("");
  return path.rfind(_path, 0) == 0 &&
         (path.size() == _path.size() || path[_path.size()] == '/' || path[_path.size()] == ' ');
}

bool ControlGroup::IsPopulated() const {
  bool isPopulated = false;
  WithReserve([&] {
    const FileDescriptor events = OpenFile((_directory + "/cgroup.events").c_str(), O_RDONLY);
    if (!events.IsOpen()) return false;
    isPopulated = IsPopulatedIn(events.Get());
    return true;
  });
  return isPopulated;
}

std::unordered_set<int> ControlGroup::Members() const {
  std::unordered_set<int> members;
  if (IsPopulated()) AddMembers(_directory, members);
  return members;
}

bool ControlGroup::Kill() const {
  return WithReserve([&] {
    const FileDescriptor file = OpenFile((_directory + "/cgroup.kill").c_str(), O_WRONLY);
    return file.IsOpen() && WriteAll(file.Get(), "1", 1);
  });
}

void ControlGroup::AwaitEmpty(int limitMs) const {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::milliseconds(limitMs);
  const FileDescriptor events = OpenFile((_directory + "/cgroup.events").c_str(), O_RDONLY);
  while (events.IsOpen() && IsPopulatedIn(events.Get())) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return;
    pollfd changed = {events.Get(), POLLPRI, 0};
    poll(&changed, 1, static_cast<int>(left.count()));
  }
}

}  // namespace vor
