#ifndef VOR_THREAD_TATHREADRWLOCK_H
#define VOR_THREAD_TATHREADRWLOCK_H

#include <atomic>

#include "base/Export.h"
#include "thread/TAThreadLock.h"

/// A lock that many readers or one writer may hold, between the threads of one process.
///
/// GetLock and ReleaseLock are those of a reader.  Writers go first: while one waits, readers that
/// come later wait behind it, so no stream of readers keeps a writer out.  For the same reason a
/// thread that holds the lock as a reader must not take it once more: with a writer waiting in
/// between both wait for ever.
///
/// A reader releases with ReleaseLock, a writer with ReleaseWriteLock; mixing them up is not
/// noticed.  Waiters spin, as those of TAThreadLock.
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

  /// Enters as the only writer, when the readers that are inside have left.
  virtual int GetWriteLock();
  /// Leaves as the writer.
  virtual int ReleaseWriteLock();

 private:
  std::atomic<unsigned> _state{0};  // readers inside, and whether a writer waits or writes
};

#endif  // VOR_THREAD_TATHREADRWLOCK_H
