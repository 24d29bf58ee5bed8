#ifndef VOR_THREAD_TATHREADLOCK_H
#define VOR_THREAD_TATHREADLOCK_H

#include <atomic>

#include "../base/Export.h"

/// A spin lock between the threads of one process, for critical sections of a few instructions.
///
/// A thread that waits for it neither sleeps nor yields: it keeps a processor busy.  So use it only
/// while there are no more threads than processors.  With more, a thread may lose the processor
/// while it holds the lock, and the others then spin until it returns: 8 threads on 2 processors
/// were 11 times slower than with std::mutex, 200 were 52 times slower, and some got the lock once
/// a second.  In that case, and if the lock is held for long, use std::mutex or VorMutex.
///
/// It is not recursive: a thread that takes a lock it holds waits for ever.  Any thread may
/// release it.
///
/// The first lock that a tool constructs, also as part of a counter or a TAThread, creates the
/// arena file of the process (see IrixLockDriver).  The library's own static locks do not.
///
/// Ownership: the destructor releases nothing; when it runs, no thread must hold the lock or wait
///            for it.
/// Errors:    none; every operation returns 1.
/// Threads:   every operation may be called from any thread.  A lock may be a static object.
class VOR_API TAThreadLock {
 public:
  TAThreadLock();
  TAThreadLock(const TAThreadLock&) = delete;
  TAThreadLock& operator=(const TAThreadLock&) = delete;

  /// Waits for the lock and takes it.  Returns 1.
  virtual int GetLock();
  /// Releases it.  Returns 1.
  virtual int ReleaseLock();

  virtual ~TAThreadLock();

 protected:
  /// For static locks of the library, which exist in every process: creates no arena.
  struct WithoutArena {};
  constexpr explicit TAThreadLock(WithoutArena) {}

  /// Takes the lock of this class if it is free.  Returns whether it did.
  bool TryLock();

 private:
  std::atomic<bool> _lockWord{false};
};

#endif  // VOR_THREAD_TATHREADLOCK_H
