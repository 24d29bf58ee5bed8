#ifndef VOR_BASE_MUTEXHOLDER_H
#define VOR_BASE_MUTEXHOLDER_H

#include "base/VorMutex.h"

namespace vor {

/// Holds a mutex for as long as it lives.
class MutexHolder {
 public:
  explicit MutexHolder(VorMutex& mutex) : _mutex(mutex) { _mutex.Lock(); }
  MutexHolder(const MutexHolder&) = delete;
  MutexHolder& operator=(const MutexHolder&) = delete;
  ~MutexHolder() { _mutex.Unlock(); }

 private:
  VorMutex& _mutex;
};

}  // namespace vor

#endif  // VOR_BASE_MUTEXHOLDER_H
