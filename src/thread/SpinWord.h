#ifndef VOR_THREAD_SPINWORD_H
#define VOR_THREAD_SPINWORD_H

#include <atomic>

namespace vor {

// All locks stand on one word in memory: true while it is held.

/// Waits until the word is free and takes it.  The wait neither yields nor sleeps: what the locks
/// guard takes less time than a visit to the scheduler.
inline void TakeSpinWord(std::atomic<bool>& word) {
  while (word.exchange(true, std::memory_order_acquire)) {
    // Only reading until it looks free leaves the cache line with its holder.
    while (word.load(std::memory_order_relaxed)) {
    }
  }
}

inline void ReleaseSpinWord(std::atomic<bool>& word) {
  word.store(false, std::memory_order_release);
}

}  // namespace vor

#endif  // VOR_THREAD_SPINWORD_H
