#ifndef VOR_PROCESS_PROCESSSIGNAL_H
#define VOR_PROCESS_PROCESSSIGNAL_H

#include <sys/types.h>

#include <functional>

#include "process/ProcessTable.h"

namespace vor {

/// False once the child \a pid was reaped: another process may have its number then.
bool IsChild(pid_t pid);

/// kill() for a child of this process: returns 0 or an errno, ESRCH if there is no such child.
/// Signals no other process, even if the child is reaped at this moment.
int SignalChild(pid_t pid, int signal);

/// The same for the process group that the child \a leader leads.
int SignalGroup(pid_t leader, int signal);

/// kill() for a process of the process table: returns 0 or an errno, ESRCH if it has ended.  Never
/// signals a later process with the same number.
int SignalProcess(const ProcessRow& process, int signal);

/// kill() for the process \a pid if \a isWanted says that it is the wanted one: returns 0 or an
/// errno, ESRCH if it is not.
int SignalWanted(pid_t pid, int signal, const std::function<bool()>& isWanted);

}  // namespace vor

#endif  // VOR_PROCESS_PROCESSSIGNAL_H
