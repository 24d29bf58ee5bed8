#include "process/MarkedProcesses.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string_view>

#include "base/PosixFile.h"
#include "process/ProcessSignal.h"
#include "process/ReserveDescriptors.h"

namespace vor {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCounterBits = 39;  // the other 22 bits hold a process number
constexpr std::uint64_t kOutermost = std::uint64_t{1} << 62;
constexpr std::uint64_t kNested = std::uint64_t{1} << 61;  // a soft limit is below the hard one

constexpr int kMostRounds = 10;
constexpr std::chrono::milliseconds kNoSuspect(2);
constexpr std::chrono::milliseconds kNoKill(30);
constexpr std::chrono::milliseconds kLongestChase(500);

constinit std::atomic<std::uint64_t> counter = 0;

// A random start separates this process from others that have had its number.
std::uint64_t RandomNumber() {
  std::uint64_t number = 0;
  while (getrandom(&number, sizeof number, 0) < 0 && errno == EINTR) {
  }
  return number | 1;
}

std::string NameOf(std::uint64_t number) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string name;
  for (; number != 0; number >>= 4) name += kDigits[number & 15];
  return "VOR_CONTAINER_" + name;
}

// Stores the file \a name of a process.
bool ReadProcessFile(int pid, const char* name, std::string& text) {
  const std::string path = "/proc/" + std::to_string(pid) + "/" + name;
  return WithReserve([&] {
    text.clear();
    const FileDescriptor file = OpenFile(path.c_str(), O_RDONLY);
    return file.IsOpen() && ReadToEnd(file.Get(), text);
  });
}

// The number of the process that was started last on this system; 0 if it is not known.
int NewestProcess() {
  std::string text;
  const FileDescriptor file = OpenFile("/proc/loadavg", O_RDONLY);
  if (!file.IsOpen() || !ReadToEnd(file.Get(), text)) return 0;
  return atoi(text.c_str() + text.rfind(' ') + 1);
}

bool HasLimit(std::string_view limits, std::uint64_t number) {
  const std::size_t begin = limits.find("Max file locks ");
  if (begin == std::string_view::npos) return false;
  const std::string_view line = limits.substr(begin, limits.find('\n', begin) - begin);
  for (const std::uint64_t level : {kOutermost, kNested}) {
    if (line.find(" " + std::to_string(level | number) + " ") != std::string_view::npos)
      return true;
  }
  return false;
}

// Whether \a environment, entries with a NUL after each, holds \a variable.
bool HasVariable(std::string_view environment, std::string_view variable) {
  for (std::size_t place = environment.find(variable); place != std::string_view::npos;
       place = environment.find(variable, place + 1)) {
    const std::size_t end = place + variable.size();
    const bool isWhole = end == environment.size() || environment[end] == '\0';
    if (isWhole && (place == 0 || environment[place - 1] == '\0')) return true;
  }
  return false;
}

}  // namespace

std::uint64_t UniqueNumber() {
  std::uint64_t none = 0;
  if (counter.load() == 0) counter.compare_exchange_strong(none, RandomNumber());
  const std::uint64_t count = counter.fetch_add(1) & ((std::uint64_t{1} << kCounterBits) - 1);
  return (static_cast<std::uint64_t>(getpid()) << kCounterBits | count) & (kNested - 1);
}

pid_t ProcessOf(std::uint64_t number) {
  return static_cast<pid_t>(number >> kCounterBits);
}

void ApplyMark(std::uint64_t number) {
  rlimit limit = {};
  if (getrlimit(RLIMIT_LOCKS, &limit) != 0) return;
  if (limit.rlim_max == RLIM_INFINITY) {
    limit.rlim_cur = limit.rlim_max = kOutermost | number;
  } else {
    limit.rlim_cur = kNested | number;
  }
  setrlimit(RLIMIT_LOCKS, &limit);
}

MarkedProcesses::MarkedProcesses() : _number(UniqueNumber()), _variable(NameOf(_number) + "=1") {}

Container::Entry MarkedProcesses::GetEntry() const {
  Entry entry;
  entry.variable = _variable.c_str();
  entry.mark = _number;
  return entry;
}

int MarkedProcesses::SignalAll(int signal) {
  if (signal != SIGKILL) return TreeContainer::SignalAll(signal);
  int count = 0;
  for (int round = 0; round < kMostRounds; ++round) {
    const int newest = NewestProcess();
    count += TreeContainer::SignalAll(signal);
    if (NewestProcess() == newest) break;
    const int further = KillNewest();
    if (further == 0) break;
    count += further;
  }
  return count;
}

// Ends when for some time no process was started that is marked, or has ended so soon that it may
// have been.
int MarkedProcesses::KillNewest() const {
  const auto begin = Clock::now();
  auto lastSuspect = begin;
  auto lastKill = begin;
  int newest = 0;
  int count = 0;
  for (auto now = begin; now - begin < kLongestChase; now = Clock::now()) {
    const int pid = NewestProcess();
    if (pid != newest) {
      bool isStranger = false;
      const auto isMarked = [&] {
        std::string text;
        if (!ReadProcessFile(pid, "limits", text)) return false;
        isStranger = !HasLimit(text, _number);
        return !isStranger;
      };
      if (SignalWanted(pid, SIGKILL, isMarked) == 0) {
        lastKill = now;
        ++count;
      }
      if (!isStranger) lastSuspect = now;
    }
    newest = pid;
    if (now - lastSuspect > kNoSuspect || now - lastKill > kNoKill) break;
  }
  return count;
}

ProcessTable MarkedProcesses::Find(const ProcessTable& table) {
  std::set<ProcessId> strangers;
  for (const ProcessRow& process : table) {
    if (_strangers.count(IdOf(process)) != 0) strangers.insert(IdOf(process));
  }
  _strangers.swap(strangers);
  return TreeContainer::Find(table);
}

bool MarkedProcesses::IsMarked(const ProcessRow& process) {
  if (process.start < Root().start || HasEnded(process)) return false;
  if (_strangers.count(IdOf(process)) != 0) return false;
  std::string text;
  if (ReadProcessFile(process.pid, "limits", text) && HasLimit(text, _number)) return true;
  if (ReadProcessFile(process.pid, "environ", text)) {
    if (HasVariable(text, _variable)) return true;
    if (text.empty()) return false;  // perhaps in the middle of an exec
  } else if (errno != EACCES) {
    return false;
  }
  _strangers.insert(IdOf(process));
  return false;
}

}  // namespace vor
