#ifndef VOR_BASE_VORMUTEX_H
#define VOR_BASE_VORMUTEX_H

#include <mutex>

#include "base/Export.h"

/// A mutual-exclusion lock between the threads of one process.
///
/// Not recursive: a thread that locks it twice waits for itself.  Unlock is called by the thread
/// that locked it.
///
/// Threads: every operation may be called from any thread.
class VOR_API VorMutex {
 public:
  /// The argument is accepted for callers of the older form and has no effect.
  explicit VorMutex(int = 0);
  VorMutex(const VorMutex&) = delete;
  VorMutex& operator=(const VorMutex&) = delete;
  ~VorMutex();

  void Lock();
  void Unlock();

 private:
  std::mutex _mutex;
};

#endif  // VOR_BASE_VORMUTEX_H
