#include "thread/TAThreadRWLock.h"

// One word holds it all: the readers that are inside, and the turnstile that they pass and a writer
// keeps, first until they have left and then for its write.

namespace {

constexpr unsigned kTurnstile = 1;
constexpr unsigned kReader = 2;

}  // namespace

TAThreadRWLock::TAThreadRWLock() = default;

TAThreadRWLock::~TAThreadRWLock() = default;

int TAThreadRWLock::GetLock() {
  unsigned state = _state.load(std::memory_order_relaxed);
  for (;;) {
    if ((state & kTurnstile) != 0) {
      state = _state.load(std::memory_order_relaxed);
    } else if (_state.compare_exchange_weak(state, state + kReader, std::memory_order_acquire,
                                            std::memory_order_relaxed)) {
      return 1;
    }
  }
}

int TAThreadRWLock::ReleaseLock() {
  _state.fetch_sub(kReader, std::memory_order_release);
  return 1;
}

int TAThreadRWLock::GetWriteLock() {
  while ((_state.fetch_or(kTurnstile, std::memory_order_acquire) & kTurnstile) != 0) {
    while ((_state.load(std::memory_order_relaxed) & kTurnstile) != 0) {
    }
  }
  while (_state.load(std::memory_order_acquire) != kTurnstile) {
  }
  return 1;
}

int TAThreadRWLock::ReleaseWriteLock() {
  _state.fetch_and(~kTurnstile, std::memory_order_release);
  return 1;
}
