#ifndef VOR_THREAD_SPINWORD_H
#define VOR_THREAD_SPINWORD_H

#include <atomic>

namespace vor {

// The plain locks consist of one word in memory, which is true while the lock is held.

/// Takes the word if it is free.  Returns whether it did.
inline bool TrySpinWord(std::atomic<bool>& word) {
  return !word.exchange(true, std::memory_order_acquire);
}

/// Waits until the word is free and takes it.  The wait neither yields nor sleeps: the locks guard
/// sections that are shorter than a call of the scheduler.
inline void TakeSpinWord(std::atomic<bool>& word) {
  while (!TrySpinWord(word)) {
    // Reading until it looks free leaves the cache line with the holder.
    while (word.load(std::memory_order_relaxed)) {
    }
  }
}

inline void ReleaseSpinWord(std::atomic<bool>& word) {
  word.store(false, std::memory_order_release);
}

}  // namespace vor

#endif  // VOR_THREAD_SPINWORD_H
