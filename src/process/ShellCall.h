#ifndef VOR_PROCESS_SHELLCALL_H
#define VOR_PROCESS_SHELLCALL_H

#include <signal.h>

namespace vor {

/// Does and returns what system() does: -1 if no process can be made or if the system reaped the
/// shell (SIGCHLD is ignored), the wait status of an exit with 127 if there is no shell.
///
/// The shell blocks the signals of \a mask; null: those that the calling thread blocks.
///
/// Unlike system(), it works in the forked child of a threaded process, and children that other
/// threads start while a command runs do not inherit that this process ignores SIGINT and SIGQUIT.
int RunInShell(const char* command, const sigset_t* mask = nullptr);

/// Detects whether a child was forked during a RunInShell.  Construct it before the fork.
class ShellCallWatch {
 public:
  ShellCallWatch();

  /// Called in the child: whether \a number is ignored for a RunInShell alone, so that the child
  /// must get its default back.  Async-signal-safe.
  bool IsIgnoredForShell(int number) const;

 private:
  unsigned _begun;   // calls that had begun
  unsigned _active;  // of them, those that had not ended
};

}  // namespace vor

#endif  // VOR_PROCESS_SHELLCALL_H
