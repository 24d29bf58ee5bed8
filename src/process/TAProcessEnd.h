#ifndef VOR_PROCESS_TAPROCESSEND_H
#define VOR_PROCESS_TAPROCESSEND_H

#include "../base/Export.h"
#include "../base/VorString.h"

/// How a command ended, as TAProcess::GetEnd and TAProcessList::GetEnd return it.
///
/// The folded statuses and return codes of those classes do not distinguish a signal from an exit
/// code, or a command whose end is unknown from one that passed.  This value does: a command passed
/// if and only if its kind is Exited and its code is 0.
struct VOR_API TAProcessEnd {
  enum Kind : int {
    NotEnded,    ///< it waits or runs, or there never was a child
    Exited,      ///< it ended by itself; the code is its exit code
    Signalled,   ///< a signal killed it; the code is the signal
    TimedOut,    ///< it was killed because its time limit was over
    NotStarted,  ///< the fork or the exec failed; the code is the errno of that
    Lost         ///< it was reaped elsewhere, so its end is unknown
  };

  Kind kind = NotEnded;
  int code = 0;             ///< see the kind; 0 for NotEnded, TimedOut and Lost
  bool coreDumped = false;  ///< the signal left a core file
  double seconds = 0;       ///< from its start until its end was noticed; so far, if it runs

  /// One line: "exit 3", "killed by SIGSEGV (core dumped)", "timed out after 5 s" (whole seconds),
  /// "could not start: No such file or directory", "its end was collected elsewhere", "not ended".
  VorString Describe() const;
};

#endif  // VOR_PROCESS_TAPROCESSEND_H
