#ifndef VOR_PROCESS_COMMANDTIMES_H
#define VOR_PROCESS_COMMANDTIMES_H

#include <chrono>
#include <ctime>

struct processInfo;

namespace vor {

// The two kinds of time limits of a TAProcessList.  Seconds are those of the clock of the day, as
// the system counts them: a command is overdue in the first second after its deadline.
// Milliseconds are those of the steady clock (CLOCK_MONOTONIC), which cannot be set and stands
// still while the system is suspended, like the command.

/// The present, by both clocks.
struct Moment {
  std::time_t second = std::time(nullptr);
  std::chrono::steady_clock::time_point precise = std::chrono::steady_clock::now();
};

/// The longest duration: no limit.
constexpr std::chrono::milliseconds kNoTimeLimit = std::chrono::milliseconds::max();

/// The command has just started.
void BeginTimeLimit(processInfo& entry);

/// The command has got SIGTERM, and is killed after \a milliseconds.
void BeginGrace(processInfo& entry, int milliseconds);

/// Whether the time limit of the command, or its grace time, is over.
bool IsOverdue(const processInfo& entry, const Moment& now);

/// How long to wait before calling IsOverdue again; at least 1 ms, or kNoTimeLimit.
std::chrono::milliseconds UntilOverdue(const processInfo& entry, const Moment& now);

}  // namespace vor

#endif  // VOR_PROCESS_COMMANDTIMES_H
