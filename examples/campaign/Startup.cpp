#include "Startup.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <initializer_list>

#include "Commands.h"

namespace campaign {

void PrepareProcess() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    // The streams below are open, so a new descriptor gets this number.
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) _exit(kTrouble);
  }
  signal(SIGCHLD, SIG_DFL);
  // Caught, not ignored: other programs would inherit that.
  for (const int failedWrite : {SIGPIPE, SIGXFSZ}) signal(failedWrite, [](int) {});
}

std::string DetachInput() {
  const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (null >= 0 && dup2(null, STDIN_FILENO) == STDIN_FILENO) {
    close(null);
    return "";
  }
  return "cannot make /dev/null the input of the tests: " + std::string(strerror(errno));
}

}  // namespace campaign
