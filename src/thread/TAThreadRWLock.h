#ifndef VOR_THREAD_TATHREADRWLOCK_H
#define VOR_THREAD_TATHREADRWLOCK_H

#include <atomic>

#include "../base/Export.h"
#include "TAThreadLock.h"

/// A lock between the threads of one process that many readers or one writer may hold.
///
/// A reader calls GetLock and ReleaseLock, a writer GetWriteLock and ReleaseWriteLock.  Confusing
/// the two pairs is not detected.
///
/// Writers go first: readers that arrive while a writer waits enter after it, so no stream of
/// readers keeps a writer out.  A thread that holds the lock as a reader must not call GetLock
/// again: if a writer waits at that moment, both wait for ever.
///
/// Waiters spin.  With more threads than processors use std::shared_mutex; see TAThreadLock.
///
/// Errors:    none; every operation returns 1.
/// Threads:   every operation may be called from any thread.
class VOR_API TAThreadRWLock : public TAThreadLock {
 public:
  TAThreadRWLock();
  ~TAThreadRWLock() override;

  /// Enters as a reader.
  int GetLock() override;
  /// Leaves as a reader.
  int ReleaseLock() override;

  /// Enters as the only writer, after the readers inside have left.
  virtual int GetWriteLock();
  /// Leaves as the writer.
  virtual int ReleaseWriteLock();

 private:
  std::atomic<unsigned> _state{0};  // the readers inside, and whether a writer waits or writes
};

#endif  // VOR_THREAD_TATHREADRWLOCK_H
