#ifndef VOR_PROCESS_TAPROCESSEND_H
#define VOR_PROCESS_TAPROCESSEND_H

#include "../base/Export.h"
#include "../base/VorString.h"

/// How a command ended, as TAProcess::GetEnd and TAProcessList::GetEnd return it.
///
/// The folded statuses and return codes of those classes do not distinguish a signal from an exit
/// code, or a command whose end is unknown from one that passed.  This value does.
struct VOR_API TAProcessEnd {
  enum Kind : int {
    NotEnded,    ///< it waits or runs, or there never was a child
    Exited,      ///< it ended by itself; the code is its exit code
    Signalled,   ///< a signal killed it; the code is the signal
    TimedOut,    ///< it was killed, or ended after SIGTERM, because its time limit was over
    Cancelled,   ///< the same because it was cancelled, perhaps before it started
    NotStarted,  ///< it could not be started; the code is an errno, and the object is what failed
    Lost         ///< it was reaped elsewhere, so its end is unknown
  };

  Kind kind = NotEnded;
  int code = 0;             ///< see the kind; 0 for the others
  bool coreDumped = false;  ///< the signal left a core file

  /// For NotStarted the setting that could not be applied and its value, such as "directory /x",
  /// or "empty command"; empty if it was the fork or the exec.
  VorString object = {};

  /// From its start until its end was noticed; so far, if it runs.
  double seconds = 0;

  // What the command and those of its descendants that it waited for have used, as the system
  // counts it (wait4).  0 until it was reaped, and for NotStarted and Lost.

  double userSeconds = 0;
  double systemSeconds = 0;
  /// The largest resident memory of any one of them.  At least that of this process at the start,
  /// which the system counts before the exec.
  long peakMemoryKiB = 0;

  /// How many processes were left when the command had ended, and were killed; only with
  /// SetLeavesNobody.
  int leftBehind = 0;

  /// Whether the command ended by itself with the exit code 0: the only sure sign of success.
  bool Passed() const { return kind == Exited && code == 0; }

  /// One line: "exit 3", "killed by SIGSEGV (core dumped)", "timed out after 5 s" (whole seconds;
  /// tenths below one), "cancelled", "could not start: No such file or directory", "could not
  /// start: directory /x: No such file or directory", "its end was collected elsewhere", "not
  /// ended".
  VorString Describe() const;
};

#endif  // VOR_PROCESS_TAPROCESSEND_H
