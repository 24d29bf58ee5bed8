#ifndef VOR_THREAD_TATHREADLOCK_H
#define VOR_THREAD_TATHREADLOCK_H

#include <atomic>

#include "base/Export.h"

/// A mutual-exclusion lock between the threads of one process, for critical sections of a few
/// instructions.
///
/// Whoever waits for it spins: it neither sleeps nor yields, and keeps a processor busy.  It is not
/// recursive: a thread that takes a lock it holds waits for ever.  Any thread may release it.
///
/// Ownership: the destructor releases nothing; nobody may hold the lock or wait for it then.
/// Errors:    none; every operation returns 1.
/// Threads:   every operation may be called from any thread.  A lock may be a static object.
class VOR_API TAThreadLock {
 public:
  TAThreadLock();
  TAThreadLock(const TAThreadLock&) = delete;
  TAThreadLock& operator=(const TAThreadLock&) = delete;

  /// Waits for the lock and takes it.  Returns 1.
  virtual int GetLock();
  /// Gives it back.  Returns 1.
  virtual int ReleaseLock();

  virtual ~TAThreadLock();

 protected:
  /// For locks that are there in every process: makes no arena, which is left to their first use.
  struct WithoutArena {};
  explicit TAThreadLock(WithoutArena) {}

 private:
  std::atomic<bool> _lockWord{false};
};

#endif  // VOR_THREAD_TATHREADLOCK_H
