#include "process/ProcessTable.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/PosixFile.h"
#include "process/ReserveDescriptors.h"

namespace vor {
namespace {

constexpr char kProc[] = "/proc";
constexpr char kListing[] = "ps -ef";

struct DirCloser {
  void operator()(DIR* dir) const { closedir(dir); }
};
struct PipeCloser {
  void operator()(FILE* pipe) const { pclose(pipe); }
};

// The number that \a text consists of.
template <typename Number = int>
std::optional<Number> NumberOf(std::string_view text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

// Removes the first field from \a fields, which are separated by single blanks, and returns it.
std::string_view TakeField(std::string_view& fields) {
  const std::string_view field = fields.substr(0, fields.find(' '));
  fields.remove_prefix(std::min(field.size() + 1, fields.size()));
  return field;
}

// Stores the fields of a stat file, "12 (name) S 1 ...".  The name may contain blanks and
// parentheses; only a letter and numbers follow it.  False if there is no parent.
bool ParseStat(std::string_view stat, ProcessRow& row) {
  constexpr int kBetweenGroupAndThreads = 14;
  const std::size_t nameEnd = stat.rfind(')');
  if (nameEnd == std::string_view::npos || stat.size() < nameEnd + 4) return false;
  row.state = stat[nameEnd + 2];
  stat.remove_prefix(nameEnd + 4);  // ") S "
  const std::optional<int> parent = NumberOf(TakeField(stat));
  row.group = NumberOf(TakeField(stat)).value_or(0);
  for (int field = 0; field < kBetweenGroupAndThreads; ++field) TakeField(stat);
  row.threads = NumberOf(TakeField(stat)).value_or(1);
  TakeField(stat);
  row.parent = parent.value_or(0);
  row.start = NumberOf<unsigned long long>(TakeField(stat)).value_or(0);
  return parent.has_value();
}

enum class StatResult { Read, Ended, Unreadable };

// Completes the row of the process whose directory in \a proc is \a name.
StatResult ReadStat(int proc, const char* name, ProcessRow& row) {
  char path[32];
  if (strlen(name) + sizeof "/stat" > sizeof path) return StatResult::Ended;  // no identifier
  strcat(strcpy(path, name), "/stat");
  const FileDescriptor file(AboveStandard(openat(proc, path, O_RDONLY | O_CLOEXEC)));
  if (!file.IsOpen()) {
    return errno == ENOENT || errno == ESRCH ? StatResult::Ended : StatResult::Unreadable;
  }
  char text[1024];  // more than the fields up to the start time take
  const ssize_t count = ReadSome(file.Get(), text, sizeof text);
  if (count < 0) return errno == ESRCH ? StatResult::Ended : StatResult::Unreadable;
  const std::string_view stat(text, static_cast<std::size_t>(count));
  return ParseStat(stat, row) ? StatResult::Read : StatResult::Ended;
}

// The row of one process by its number.
StatResult ReadProcess(ProcessRow& row) {
  const std::string name = std::string(kProc) + "/" + std::to_string(row.pid);
  StatResult result;
  WithReserve([&] {
    result = ReadStat(AT_FDCWD, name.c_str(), row);
    return result != StatResult::Unreadable;
  });
  return result;
}

// Stopped, traced, or ended; or not known, where the table comes from a listing.
bool IsMotionlessState(const ProcessRow& thread) {
  constexpr std::string_view kStates("TtZXx\0", 6);
  return kStates.find(thread.state) != std::string_view::npos;
}

// Anything but printable ASCII separates words.
bool IsBlank(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte <= ' ' || byte >= 128;
}

// Removes the first word from \a line and returns it; empty if there is none.
std::string_view TakeWord(std::string_view& line) {
  const char* const end = line.data() + line.size();
  const char* const first = std::find_if_not(line.data(), end, IsBlank);
  const char* const last = std::find_if(first, end, IsBlank);
  line = std::string_view(last, static_cast<std::size_t>(end - last));
  return std::string_view(first, static_cast<std::size_t>(last - first));
}

}  // namespace

bool ReadProcDirectory(const char* directory, ProcessTable& table) {
  FileDescriptor proc = OpenFile(directory, O_RDONLY | O_DIRECTORY);
  const std::unique_ptr<DIR, DirCloser> dir(proc.IsOpen() ? fdopendir(proc.Get()) : nullptr);
  if (dir == nullptr) return false;
  proc.Release();
  table.clear();
  while (const dirent* entry = readdir(dir.get())) {
    const std::optional<int> pid = NumberOf(entry->d_name);
    if (!pid || *pid <= 0) continue;
    ProcessRow row{*pid, 0};
    const StatResult result = ReadStat(dirfd(dir.get()), entry->d_name, row);
    if (result == StatResult::Unreadable) return false;
    if (result == StatResult::Read) table.push_back(row);
  }
  std::sort(table.begin(), table.end(),
            [](const ProcessRow& left, const ProcessRow& right) { return left.pid < right.pid; });
  return !table.empty();  // this process at least would be there
}

bool ReadProcessListing(const char* command, ProcessTable& table) {
  const StandardDescriptorsHeld held;
  const std::unique_ptr<FILE, PipeCloser> pipe(popen(command, "re"));
  if (pipe == nullptr) return false;
  table.clear();
  std::string text;
  ReadToEnd(fileno(pipe.get()), text);
  // Reads whole lines, however long: the tail of a long argument must not be read as a process.
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t length = std::min(rest.find('\n'), rest.size() - 1) + 1;
    std::string_view line = rest.substr(0, length);
    rest.remove_prefix(length);
    TakeWord(line);
    const std::optional<int> pid = NumberOf(TakeWord(line));
    const std::optional<int> parent = NumberOf(TakeWord(line));
    if (pid && parent && *pid > 0) table.push_back({*pid, *parent});
  }
  return true;
}

bool ReadProcessTable(ProcessTable& table) {
  return WithReserve([&] { return ReadProcDirectory(kProc, table); }) ||
         ReadProcessListing(kListing, table);
}

std::optional<unsigned long long> ReadStartTime(int pid) {
  ProcessRow row{pid, 0};
  if (ReadProcess(row) == StatResult::Unreadable) return std::nullopt;
  return row.start;
}

bool HasEnded(const ProcessRow& process) {
  if (process.threads > 1) return false;  // the first one may have ended
  return process.state == 'Z' || process.state == 'X' || process.state == 'x';
}

bool IsMotionless(const ProcessRow& process, const char* directory) {
  if (!IsMotionlessState(process)) return false;
  if (process.threads <= 1) return true;
  const std::string path = directory + ("/" + std::to_string(process.pid)) + "/task";
  ProcessTable tasks;
  return WithReserve([&] { return ReadProcDirectory(path.c_str(), tasks); }) &&
         std::all_of(tasks.begin(), tasks.end(), IsMotionlessState);
}

bool IsLiving(const ProcessRow& process) {
  ProcessRow row{process.pid, 0};
  if (ReadProcess(row) != StatResult::Read) return false;
  return row.start == process.start && !HasEnded(row);
}

}  // namespace vor
