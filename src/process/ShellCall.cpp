#include "process/ShellCall.h"

#include <stdlib.h>

#include <mutex>
#include <shared_mutex>

namespace vor {
namespace {

constexpr int kInteractive[] = {SIGINT, SIGQUIT};

// Starts share the lock, so they do not wait for each other; a RunInShell holds it only while it
// registers, not while its command runs.
struct ShellCalls {
  std::shared_mutex mutex;
  int active = 0;
  sigset_t handled;  // of kInteractive, those that were not ignored before the first active call
};

// Never destroyed: children may be started by destructors of static objects.
ShellCalls& Calls() {
  static ShellCalls& calls = *new ShellCalls;
  return calls;
}

void BeginCall() {
  ShellCalls& calls = Calls();
  const std::unique_lock lock(calls.mutex);
  if (calls.active++ > 0) return;
  sigemptyset(&calls.handled);
  for (const int number : kInteractive) {
    struct sigaction action = {};
    const bool known = sigaction(number, nullptr, &action) == 0;
    if (known && action.sa_handler != SIG_IGN) sigaddset(&calls.handled, number);
  }
}

void EndCall() {
  ShellCalls& calls = Calls();
  const std::unique_lock lock(calls.mutex);
  --calls.active;
}

}  // namespace

int RunInShell(const char* command) {
  BeginCall();
  const int result = system(command);
  EndCall();
  return result;
}

ShellCallScope::ShellCallScope() {
  ShellCalls& calls = Calls();
  calls.mutex.lock_shared();
  sigemptyset(&_ignored);
  if (calls.active > 0) _ignored = calls.handled;
}

ShellCallScope::~ShellCallScope() {
  Calls().mutex.unlock_shared();
}

}  // namespace vor
