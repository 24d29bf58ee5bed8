#ifndef VOR_EXAMPLES_CAMPAIGN_STARTUP_H
#define VOR_EXAMPLES_CAMPAIGN_STARTUP_H

#include <string>

namespace campaign {

/// Resets process state that a parent may have changed; the first call of main.
///
/// Opens standard input, output and error on /dev/null where they are closed, so that no other file
/// gets their numbers and their output.  Resets SIGCHLD to its default: while it is ignored, the
/// system reaps the tests and their exit codes are lost.  Catches SIGPIPE and SIGXFSZ, so that a
/// reader that goes away and a limit on the size of files show as failed writes.
void PrepareProcess();

/// Makes /dev/null the standard input, from which tests inherit it.  Call it after everything that
/// may be read from standard input.  Returns "" or one line that says why it failed.
std::string DetachInput();

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_STARTUP_H
