#ifndef VOR_BASE_SCOPEDLOCK_H
#define VOR_BASE_SCOPEDLOCK_H

namespace vor {

/// Holds a lock from construction to destruction: a VorMutex, or a lock with GetLock and
/// ReleaseLock.
template <typename Lock>
class ScopedLock {
 public:
  explicit ScopedLock(Lock& lock) : _lock(lock) {
    if constexpr (requires { lock.GetLock(); }) {
      lock.GetLock();
    } else {
      lock.Lock();
    }
  }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;
  ~ScopedLock() {
    if constexpr (requires { _lock.ReleaseLock(); }) {
      _lock.ReleaseLock();
    } else {
      _lock.Unlock();
    }
  }

 private:
  Lock& _lock;
};

}  // namespace vor

#endif  // VOR_BASE_SCOPEDLOCK_H
