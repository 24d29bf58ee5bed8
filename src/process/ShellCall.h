#ifndef VOR_PROCESS_SHELLCALL_H
#define VOR_PROCESS_SHELLCALL_H

#include <signal.h>

namespace vor {

/// system(), known to the children that are started meanwhile.
///
/// While a command of system() runs, the whole process ignores SIGINT and SIGQUIT; a child that
/// another thread starts in that time must not inherit it.
int RunInShell(const char* command);

/// Held while a child is started: tells which signals are ignored for a RunInShell alone.
class ShellCallScope {
 public:
  ShellCallScope();
  ShellCallScope(const ShellCallScope&) = delete;
  ShellCallScope& operator=(const ShellCallScope&) = delete;
  ~ShellCallScope();

  /// The signals that the child is to get back their defaults of.
  const sigset_t& IgnoredForShell() const { return _ignored; }

 private:
  sigset_t _ignored;
};

}  // namespace vor

#endif  // VOR_PROCESS_SHELLCALL_H
