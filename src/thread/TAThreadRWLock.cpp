#include "thread/TAThreadRWLock.h"

// The turnstile
//
// Every reader passes a turnstile on its way in.  A writer closes the turnstile, waits until the
// readers inside have left, writes, and opens it again.  Readers that come after a writer thus wait
// for it, so no stream of readers keeps a writer out.  Writers exclude each other by the turnstile
// too: it is closed by one at a time.
//
// One word holds the whole state, so that each step is one atomic operation: bit 0 is set while the
// turnstile is closed, and the bits above it count the readers inside.
//
//     GetLock           waits for bit 0 to be clear, and adds a reader in the same operation
//     ReleaseLock       subtracts a reader
//     GetWriteLock      waits for bit 0 to be clear and sets it; then waits for no readers
//     ReleaseWriteLock  clears bit 0
//
// Readers that arrive while the turnstile is closed only read the word, which leaves its cache line
// with those that change it.

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
