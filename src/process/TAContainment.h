#ifndef VOR_PROCESS_TACONTAINMENT_H
#define VOR_PROCESS_TACONTAINMENT_H

/// Which processes count as those of a command when it is killed, and when what it left behind is
/// looked for.
enum class TAContainment {
  /// The command and its descendants at that moment, as the process table shows them.  Processes
  /// whose parent has ended before are missed.
  Tree,

  /// The command starts in a process group of its own, which is signalled as one.  Processes whose
  /// parent has ended are found; those that have changed their group or session are missed,
  /// and all of them once something else, such as an ignored SIGCHLD, has reaped the command.  A
  /// command in a group of its own does not get the signals of the terminal, for instance Ctrl-C,
  /// and is stopped if it reads from the terminal.
  Group,

  /// Everything that the command started, even if it has changed its group or session or lost its
  /// parents.  TAProcess::ContainmentInUse names the means:
  ///
  /// - "cgroup": the command starts in a control group of its own, below that of this process, and
  ///   is killed by one write (cgroup.kill).  Missed: processes that were moved to another control
  ///   group, and what another process starts on request, such as a daemon.  Used if this process
  ///   may make a control group (cgroup v2, Linux 5.14).
  /// - "marks": the command starts with two marks that its descendants inherit: a variable
  ///   VOR_CONTAINER_..., and a value of the limit RLIMIT_LOCKS, which has no effect otherwise.
  ///   Members are the marked processes and their descendants, found in the process table; all are
  ///   stopped before the first one is killed.  Missed: a process that has lost its parents and
  ///   both marks, what another process starts on request, and sometimes, without being counted as
  ///   left behind, a chain of orphans each of which starts the next and ends at once.
  ///
  /// Processes that this user must not signal survive both.
  Everything
};

#endif  // VOR_PROCESS_TACONTAINMENT_H
