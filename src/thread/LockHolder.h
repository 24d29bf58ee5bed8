#ifndef VOR_THREAD_LOCKHOLDER_H
#define VOR_THREAD_LOCKHOLDER_H

#include "thread/TAThreadLock.h"

namespace vor {

/// Holds a lock for as long as it lives.
class LockHolder {
 public:
  explicit LockHolder(TAThreadLock& lock) : _lock(lock) { _lock.GetLock(); }
  LockHolder(const LockHolder&) = delete;
  LockHolder& operator=(const LockHolder&) = delete;
  ~LockHolder() { _lock.ReleaseLock(); }

 private:
  TAThreadLock& _lock;
};

}  // namespace vor

#endif  // VOR_THREAD_LOCKHOLDER_H
