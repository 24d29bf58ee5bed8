#ifndef VOR_THREAD_IRIXLOCKDRIVER_H
#define VOR_THREAD_IRIXLOCKDRIVER_H

#include <atomic>

#include "../base/Export.h"

/// Creates and maps, once in a process, the arena of its locks: the small file
/// /tmp/TABaseArena_PID.  The file shows that the process uses the locks.
///
/// There is one instance, irixLockDriver; tools need not touch it.  The constructor of every lock
/// activates it.  The library's own static locks do not: they exist in every process that links the
/// library.  The first lock of the tool, or the first use of a static lock, creates the arena.
///
/// Ownership: the process that made the file removes it when it exits.  A killed process leaves the
///            file; the next process of the same user with the same number takes it over and
///            removes it.  A child made by fork, before or after the first lock, counts as active:
///            it creates no arena and does not remove its parent's.
/// Errors:    none are reported.  If the file cannot be created, or if its name is taken by
///            something that others may own or use, the process has no arena; the locks still work.
/// Threads:   ActivateDriver may be called from any thread at any time.
class VOR_API IrixLockDriver {
 public:
  constexpr IrixLockDriver() = default;
  IrixLockDriver(const IrixLockDriver&) = delete;
  IrixLockDriver& operator=(const IrixLockDriver&) = delete;
  ~IrixLockDriver();

  /// Makes the arena on the first call in the process.
  void ActivateDriver();

 private:
  static void InForkedChild();
  void* Attach();

  static const int _forkHandler;

  void* _arena = nullptr;
  std::atomic<bool> _isActive{false};
  std::atomic<int> _maker{0};  // the process that made the file; 0: none did
  char _arenaPath[1024] = {};
};

/// The instance of this process.
extern VOR_API IrixLockDriver irixLockDriver;

#endif  // VOR_THREAD_IRIXLOCKDRIVER_H
