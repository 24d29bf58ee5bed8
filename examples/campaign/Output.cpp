#include "Output.h"

#include <errno.h>
#include <poll.h>
#include <string.h>
#include <unistd.h>

namespace campaign {
namespace {

int outputError = 0;  // errno of the first write that failed

}  // namespace

void Print(const std::string& text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t count = write(STDOUT_FILENO, text.data() + written, text.size() - written);
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN) {
      // Another process has made the shared terminal or pipe non-blocking.
      pollfd output = {STDOUT_FILENO, POLLOUT, 0};
      poll(&output, 1, -1);
    } else if (errno != EINTR) {
      if (outputError == 0) outputError = errno;
      return;
    }
  }
}

std::string Printable(std::string text) {
  for (char& c : text) {
    if ((c >= 0 && c < ' ') || c == '\x7f') c = '?';
  }
  return text;
}

std::string OutputProblem() {
  if (outputError == 0) return "";
  return "cannot write to standard output: " + std::string(strerror(outputError));
}

bool HasReaderGone() {
  pollfd output = {STDOUT_FILENO, 0, 0};
  return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

}  // namespace campaign
