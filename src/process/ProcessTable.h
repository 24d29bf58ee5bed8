#ifndef VOR_PROCESS_PROCESSTABLE_H
#define VOR_PROCESS_PROCESSTABLE_H

#include <vector>

namespace vor {

/// One process of the system and the process that it descends from.
struct ProcessRow {
  int pid;
  int parent;
};

using ProcessTable = std::vector<ProcessRow>;

/// Reads the processes of the system, ended but not collected ones included, threads not, in the
/// order in which "ps -ef" lists them: by ascending identifier.  False if there is no source.
bool ReadProcessTable(ProcessTable& table);

// The sources of ReadProcessTable, the first one that works.

/// The process file system mounted at \a folder; false if there is none.
bool ReadProcFolder(const char* folder, ProcessTable& table);

/// The output of \a command, a shell command that lists processes as "ps -ef" does: the identifier
/// is the second word of a line, the parent's the third.  False if the shell cannot be started.
bool ReadProcessListing(const char* command, ProcessTable& table);

}  // namespace vor

#endif  // VOR_PROCESS_PROCESSTABLE_H
