#include "process/ShellCall.h"

#include <errno.h>
#include <paths.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <iterator>
#include <mutex>

#include "base/ForkSafeLock.h"

// The whole process ignores SIGINT and SIGQUIT while commands run in a shell, as POSIX demands of
// system().  The first call stores the actions of these signals, the last one that ends restores
// them.  A child forked meanwhile restores them too, since no call ends there.  The C library's
// system() does that under a lock of its own, which stays locked for ever in a child that is forked
// at the wrong moment; so its work is done here, under a fork-safe lock.
//
// A child that another thread starts meanwhile inherits that the signals are ignored and must undo
// it, unless they were ignored before.  Starts take no lock: many starts at once would delay the
// shell calls, and the reverse.  Instead, two counters show whether a call was in progress at the
// moment of the fork.  A call raises `active`, then `begun`, before it ignores the signals, and
// lowers `active` after it has restored them.  A start reads `begun`, then `active`, before the
// fork and its child reads `begun` again.  If the child has inherited ignored signals, then either
// the call was active when the start looked, or it began after that and `begun` has changed.

namespace vor {
namespace {

constexpr int kInteractive[] = {SIGINT, SIGQUIT};
constexpr char kShell[] = _PATH_BSHELL;
constexpr int kNoShell = 127 << 8;  // the wait status of a shell that cannot be run

constinit ForkSafeMutex mutex(ForkStage::kService);
const ForkRegistration registration(mutex);

constinit std::atomic<unsigned> begun = 0;
constinit std::atomic<unsigned> active = 0;
// The signals that were not ignored before the first active call, one bit for each position in
// kInteractive.
constinit std::atomic<unsigned> notIgnored = 0;
struct sigaction saved[std::size(kInteractive)];  // the actions before it; under mutex

bool WasNotIgnored(std::size_t place) {
  return (notIgnored.load() >> place & 1) != 0;
}

// Keeps SIGINT and SIGQUIT ignored.
class InterruptsIgnored {
 public:
  InterruptsIgnored() {
    const std::lock_guard guard(mutex);
    const bool isFirst = active.load() == 0;
    if (isFirst) StoreActions();
    sigpending(&_pending);
    ++active;
    ++begun;
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    for (std::size_t place = 0; isFirst && place < std::size(kInteractive); ++place) {
      sigaction(kInteractive[place], &ignore, nullptr);
    }
  }
  InterruptsIgnored(const InterruptsIgnored&) = delete;
  InterruptsIgnored& operator=(const InterruptsIgnored&) = delete;
  ~InterruptsIgnored() {
    const std::lock_guard guard(mutex);
    if (active.load() == 0) return;  // in a child that a signal handler forked
    if (active.load() == 1) RestoreActions();
    --active;
    for (const int number : kInteractive) {
      if (sigismember(&_pending, number) == 1) kill(getpid(), number);
    }
  }

  // In a forked child: the calls are its parent's.
  static void EndAll() {
    if (active.load() == 0) return;
    RestoreActions();
    active = 0;
  }

 private:
  static void StoreActions() {
    unsigned bits = 0;
    for (std::size_t place = 0; place < std::size(kInteractive); ++place) {
      sigaction(kInteractive[place], nullptr, &saved[place]);
      if (saved[place].sa_handler != SIG_IGN) bits |= 1u << place;
    }
    notIgnored = bits;
  }

  static void RestoreActions() {
    for (std::size_t place = 0; place < std::size(kInteractive); ++place) {
      sigaction(kInteractive[place], &saved[place], nullptr);
    }
  }

  sigset_t _pending;  // blocked signals that arrived before: ignoring them discards them
};

const int forkHandler = pthread_atfork(nullptr, nullptr, InterruptsIgnored::EndAll);

// Keeps SIGCHLD away from the calling thread, whose handler might reap the shell.
class ChildSignalBlocked {
 public:
  ChildSignalBlocked() {
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    pthread_sigmask(SIG_BLOCK, &child, &_mask);
  }
  ChildSignalBlocked(const ChildSignalBlocked&) = delete;
  ChildSignalBlocked& operator=(const ChildSignalBlocked&) = delete;
  ~ChildSignalBlocked() { pthread_sigmask(SIG_SETMASK, &_mask, nullptr); }

  const sigset_t& Mask() const { return _mask; }

 private:
  sigset_t _mask;
};

// A shell that runs one command.  It does not outlive its object: a thread may be cancelled while
// it waits.
class Shell {
 public:
  Shell() = default;
  Shell(const Shell&) = delete;
  Shell& operator=(const Shell&) = delete;
  ~Shell() {
    if (_pid == 0) return;
    kill(_pid, SIGKILL);
    Wait();
  }

  // Returns 0 or an errno.
  int Start(const char* command, const sigset_t& mask) {
    sigset_t defaults;
    sigemptyset(&defaults);
    for (std::size_t place = 0; place < std::size(kInteractive); ++place) {
      if (WasNotIgnored(place)) sigaddset(&defaults, kInteractive[place]);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &mask);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const char* const arguments[] = {"sh", "-c", "--", command, nullptr};
    pid_t pid = 0;
    const int error = posix_spawn(&pid, kShell, nullptr, &attributes,
                                  const_cast<char* const*>(arguments), environ);
    posix_spawnattr_destroy(&attributes);
    if (error == 0) _pid = pid;
    return error;
  }

  // The wait status; -1 if the shell was reaped elsewhere.
  int Wait() {
    int status = 0;
    pid_t ended;
    do {
      ended = waitpid(_pid, &status, 0);
    } while (ended < 0 && errno == EINTR);
    _pid = 0;
    return ended < 0 ? -1 : status;
  }

 private:
  pid_t _pid = 0;  // 0: none
};

}  // namespace

int RunInShell(const char* command, const sigset_t* mask) {
  const InterruptsIgnored interrupts;
  const ChildSignalBlocked childSignal;
  Shell shell;
  const int error = shell.Start(command, mask != nullptr ? *mask : childSignal.Mask());
  if (error == 0) return shell.Wait();
  return error == EAGAIN || error == ENOMEM ? -1 : kNoShell;
}

ShellCallWatch::ShellCallWatch() : _begun(begun.load()), _active(active.load()) {}

bool ShellCallWatch::IsIgnoredForShell(int number) const {
  if (_active == 0 && begun.load() == _begun) return false;
  for (std::size_t place = 0; place < std::size(kInteractive); ++place) {
    if (kInteractive[place] == number) return WasNotIgnored(place);
  }
  return false;
}

}  // namespace vor
