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

namespace vor {
namespace {

constexpr char kProcFolder[] = "/proc";
constexpr char kListing[] = "ps -ef";

struct DirCloser {
  void operator()(DIR* dir) const { closedir(dir); }
};
struct PipeCloser {
  void operator()(FILE* pipe) const { pclose(pipe); }
};

// The number that \a text is from its first to its last byte.
std::optional<int> NumberOf(std::string_view text) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

// The fourth field of a stat file, "12 (name) S 1 ...".  The name may hold blanks and parentheses;
// behind it there are only a letter and numbers.
std::optional<int> ParentIn(std::string_view stat) {
  const std::size_t nameEnd = stat.rfind(')');
  if (nameEnd == std::string_view::npos || stat.size() < nameEnd + 4) return std::nullopt;
  stat.remove_prefix(nameEnd + 4);  // ") S "
  return NumberOf(stat.substr(0, stat.find(' ')));
}

// Stores in *parent that of the process whose folder is \a name; nothing if the process has ended
// meanwhile.  False if it may be there and cannot be read.
bool ReadParent(int procFolder, const char* name, std::optional<int>* parent) {
  char path[32];
  if (strlen(name) + sizeof "/stat" > sizeof path) return true;  // longer than any identifier
  strcat(strcpy(path, name), "/stat");
  const FileDescriptor file(openat(procFolder, path, O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) return errno == ENOENT || errno == ESRCH;
  char text[512];  // more than identifier, name and parent take; the rest is of no interest
  const ssize_t count = ReadSome(file.Get(), text, sizeof text);
  if (count < 0) return errno == ESRCH;
  *parent = ParentIn(std::string_view(text, static_cast<std::size_t>(count)));
  return true;
}

// Anything but printable ASCII separates words.
bool IsBlank(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte <= ' ' || byte >= 128;
}

// Takes the first word off \a line; empty if there is none left.
std::string_view TakeWord(std::string_view& line) {
  const char* const end = line.data() + line.size();
  const char* const first = std::find_if_not(line.data(), end, IsBlank);
  const char* const last = std::find_if(first, end, IsBlank);
  line = std::string_view(last, static_cast<std::size_t>(end - last));
  return std::string_view(first, static_cast<std::size_t>(last - first));
}

}  // namespace

bool ReadProcFolder(const char* folder, ProcessTable& table) {
  const std::unique_ptr<DIR, DirCloser> dir(opendir(folder));
  if (dir == nullptr) return false;
  table.clear();
  while (const dirent* entry = readdir(dir.get())) {
    const std::optional<int> pid = NumberOf(entry->d_name);
    if (!pid || *pid <= 0) continue;
    std::optional<int> parent;
    if (!ReadParent(dirfd(dir.get()), entry->d_name, &parent)) return false;
    if (parent) table.push_back({*pid, *parent});
  }
  std::sort(table.begin(), table.end(),
            [](const ProcessRow& left, const ProcessRow& right) { return left.pid < right.pid; });
  return !table.empty();  // this process at least would be there
}

bool ReadProcessListing(const char* command, ProcessTable& table) {
  const std::unique_ptr<FILE, PipeCloser> pipe(popen(command, "re"));
  if (pipe == nullptr) return false;
  table.clear();
  std::string text;
  ReadToEnd(fileno(pipe.get()), text);
  // Whole lines, however long: the tail of a long argument must not pass for a process.
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
  return ReadProcFolder(kProcFolder, table) || ReadProcessListing(kListing, table);
}

}  // namespace vor
