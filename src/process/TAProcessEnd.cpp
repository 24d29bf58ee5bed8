#include "process/TAProcessEnd.h"

#include <string.h>

#include <string>
#include <system_error>

namespace {

std::string NameOfSignal(int number) {
  const char* const name = sigabbrev_np(number);
  return name == nullptr ? "signal " + std::to_string(number) : std::string("SIG") + name;
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
      return "timed out after " + std::to_string(static_cast<long long>(seconds)) + " s";
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
