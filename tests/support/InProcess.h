#ifndef VOR_TESTS_SUPPORT_INPROCESS_H
#define VOR_TESTS_SUPPORT_INPROCESS_H

#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs \a body in a forked process, which may change its signals, limits and descriptors.  Returns
/// the result of \a body, 0 to 255; -1 if the process was killed.
template <typename Body>
int InProcess(Body body) {
  fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    const int result = body();
    fflush(nullptr);
    _exit(result);
  }
  int status = 0;
  return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif  // VOR_TESTS_SUPPORT_INPROCESS_H
