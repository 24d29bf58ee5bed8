#ifndef VOR_THREAD_IRIXLOCKDRIVER_H
#define VOR_THREAD_IRIXLOCKDRIVER_H

#include <atomic>

#include "base/Export.h"

/// Sets up, once in a process, the arena that the locks of its threads belong to: a small file
/// /tmp/TABaseArena_PID, mapped by the process and named after it.
///
/// There is one instance, irixLockDriver.  The constructor of every lock activates it, except that
/// those which are there in every process leave it to their first use; tools need not touch it. The
/// file shows which processes use the locks.
///
/// Ownership: the process that made the file unmaps and removes it when it exits.  A child made by
///            fork counts as active, makes no arena of its own and leaves its parent's alone.
/// Errors:    none are reported; where the file exists or cannot be made, there is no arena, and
///            the locks work all the same.
/// Threads:   ActivateDriver may be called from any thread at any time.
class VOR_API IrixLockDriver {
 public:
  constexpr IrixLockDriver() = default;
  IrixLockDriver(const IrixLockDriver&) = delete;
  IrixLockDriver& operator=(const IrixLockDriver&) = delete;
  ~IrixLockDriver();

  /// Makes the arena, on the first call in the process only.
  void ActivateDriver();

 private:
  void* Attach();

  void* _arena = nullptr;
  std::atomic<bool> _isActive{false};
  std::atomic<int> _maker{0};  // the process that made the file; 0: none did
  char _arenaPath[1024] = {};
};

/// The instance of this process.
extern VOR_API IrixLockDriver irixLockDriver;

#endif  // VOR_THREAD_IRIXLOCKDRIVER_H
