#ifndef VOR_BASE_VORMUTEX_H
#define VOR_BASE_VORMUTEX_H

#include <mutex>

#include "Export.h"

/// A mutual-exclusion lock between the threads of one process.
///
/// Not recursive: a thread that locks it twice waits for ever.  Only the thread that locked it may
/// unlock it.
///
/// Threads: every operation may be called from any thread.
class VOR_API VorMutex {
 public:
  /// The argument has no effect; it is accepted for older callers.
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
