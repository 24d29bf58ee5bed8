#ifndef VOR_PROCESS_PROCESSTABLE_H
#define VOR_PROCESS_PROCESSTABLE_H

#include <optional>
#include <vector>

namespace vor {

/// One process of the system and the process that it descends from.
struct ProcessRow {
  int pid;
  int parent;
  char state = '\0';             ///< of its first thread, as in /proc/PID/stat; NUL: not known
  unsigned long long start = 0;  ///< in clock ticks since the system started; 0: not known
  int group = 0;                 ///< the process group; 0: not known
  int threads = 1;               ///< that have not ended, and the first one
};

using ProcessTable = std::vector<ProcessRow>;

/// Reads the processes of the system, with zombies and without threads, in the order of "ps -ef":
/// by ascending identifier.  False if no source works.
bool ReadProcessTable(ProcessTable& table);

// The sources of ReadProcessTable, the first one that works.

/// The process file system mounted at \a directory; false, with errno set, if it cannot be read.
bool ReadProcDirectory(const char* directory, ProcessTable& table);

/// The output of \a command, a shell command that lists processes as "ps -ef" does: the identifier
/// is the second word of a line, the parent's the third.  False if the shell cannot be started.
bool ReadProcessListing(const char* command, ProcessTable& table);

/// When the process \a pid started, as in ProcessRow; 0 if it has ended, none if that cannot be
/// read.
std::optional<unsigned long long> ReadStartTime(int pid);

/// Whether the row shows a process that has ended and was not reaped.
bool HasEnded(const ProcessRow& process);

/// Whether all threads of the process have stopped or ended, so that it can start no other process;
/// yes if its state is not known.  \a directory: the process file system.
bool IsMotionless(const ProcessRow& process, const char* directory = "/proc");

/// Whether the process of a row has not ended yet; no if that cannot be read.
bool IsLiving(const ProcessRow& process);

}  // namespace vor

#endif  // VOR_PROCESS_PROCESSTABLE_H
