#include "process/TAProcessEnd.h"

#include <string.h>

#include <string>
#include <system_error>

namespace {

std::string NameOfSignal(int number) {
  const char* const name = sigabbrev_np(number);
  return name == nullptr ? "signal " + std::to_string(number) : std::string("SIG") + name;
}

// Down to whole seconds, below one second to tenths.
std::string Rounded(double seconds) {
  if (seconds >= 1) return std::to_string(static_cast<long long>(seconds));
  return "0." + std::to_string(static_cast<int>(seconds * 10));
}

}  // namespace

VorString TAProcessEnd::Describe() const {
  switch (kind) {
    case NotEnded:
      break;
    case Exited:
      return "exit " + std::to_string(code);
    case Signalled:
      return "killed by " + NameOfSignal(code) + (coreDumped ? " (core dumped)" : "");
    case TimedOut:
      return "timed out after " + Rounded(seconds) + " s";
    case Cancelled:
      return "cancelled";
    case NotStarted:
      return "could not start: " + (object.Length() > 0 ? object + ": " : VorString()) +
             std::generic_category().message(code).c_str();
    case Lost:
      return "its end was collected elsewhere";
  }
  return "not ended";
}
