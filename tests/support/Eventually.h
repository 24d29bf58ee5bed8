#ifndef VOR_TESTS_SUPPORT_EVENTUALLY_H
#define VOR_TESTS_SUPPORT_EVENTUALLY_H

#include <chrono>
#include <thread>

/// Waits until \a condition is true.  Returns false after about a minute.
template <typename Condition>
bool Eventually(Condition condition) {
  for (int i = 0; i < 60'000; ++i) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

#endif  // VOR_TESTS_SUPPORT_EVENTUALLY_H
