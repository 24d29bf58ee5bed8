#ifndef VOR_THREAD_TATHREADLONGLOCK_H
#define VOR_THREAD_TATHREADLONGLOCK_H

#include <atomic>

#include "../base/Export.h"
#include "TAThreadLock.h"

/// A TAThreadLock whose type documents that it is held for long.  Its waiters spin too, so use
/// std::mutex in new code.
class VOR_API TAThreadLongLock : public TAThreadLock {
 public:
  TAThreadLongLock();
  ~TAThreadLongLock() override;

  int GetLock() override;
  int ReleaseLock() override;

 private:
  std::atomic<bool> _longLockWord{false};  // in place of the base's word
};

#endif  // VOR_THREAD_TATHREADLONGLOCK_H
