#include "Output.h"

#include <errno.h>
#include <limits.h>
#include <poll.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>

#include "Interrupt.h"

namespace campaign {
namespace {

constexpr int kPollMs = 100;           // the longest delay of an interrupt
constexpr int kMostStalledPolls = 10;  // after an interrupt, for a reader that takes nothing

std::string pending;        // printed, but not yet written
std::string problem;        // why the first text was lost
bool isReaderGone = false;  // for good

void Lose(const std::string& reason) {
  if (problem.empty()) problem = reason;
  pending.clear();
}

// Waits up to \a limitMs until a write of PIPE_BUF bytes can start without blocking.  The
// descriptor stays blocking: other processes may share it.
bool CanWrite(int limitMs) {
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, limitMs) == 1;
}

// Writes what standard output takes; waits up to \a limitMs for the first bytes.
void WritePending(int limitMs) {
  std::size_t written = 0;
  while (written < pending.size() && CanWrite(written == 0 ? limitMs : 0)) {
    const std::size_t size = std::min<std::size_t>(pending.size() - written, PIPE_BUF);
    const ssize_t count = write(STDOUT_FILENO, pending.data() + written, size);
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      if (errno == EAGAIN) break;  // another process has made it non-blocking
      isReaderGone = isReaderGone || errno == EPIPE || errno == ECONNRESET;
      Lose(strerror(errno));
      return;
    }
  }
  pending.erase(0, written);
}

}  // namespace

void Print(const std::string& text) {
  if (isReaderGone) return;
  pending += text;
  WritePending(0);
}

bool ContinueOutput() {
  WritePending(0);
  return !pending.empty();
}

void FinishOutput() {
  WritePending(0);
  for (int stalled = 0; !pending.empty();) {
    const std::size_t before = pending.size();
    WritePending(kPollMs);
    stalled = IsInterrupted() && pending.size() == before ? stalled + 1 : 0;
    if (stalled == kMostStalledPolls) Lose("interrupted while its reader took nothing");
  }
}

std::string Printable(std::string text) {
  for (char& c : text) {
    if ((c >= 0 && c < ' ') || c == '\x7f') c = '?';
  }
  return text;
}

std::string OutputProblem() {
  return problem.empty() ? "" : "cannot write to standard output: " + problem;
}

bool HasReaderGone() {
  pollfd output = {STDOUT_FILENO, 0, 0};
  // A pipe reports an error, a socket that the other end hung up.
  return isReaderGone || (poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0);
}

}  // namespace campaign
