#include "base/ForkSafeLock.h"

// The first registration installs the handlers of pthread_atfork.  Before a fork, Prepare takes
// every lock on the list, in the order of stages, on the thread that forks.  After it, Finish
// releases them, in the parent and in the child.  A thread that holds a lock and waits for another
// one follows the same order, so a fork cannot deadlock with it.
//
// Forks do not lock the list itself, because that could deadlock: a thread that holds the first
// lock and forks would wait for the list, while another fork holds the list and waits for that
// lock.  Instead, locks are added to the list and never removed, and each records whose fork holds
// it: one that is added during a fork is not released by it.

namespace vor {
namespace {

constinit std::mutex registrationMutex;  // serialises registrations
constinit std::atomic<ForkSafeLock*> firstLock = nullptr;

}  // namespace

ForkRegistration::ForkRegistration(ForkSafeLock& lock) {
  const std::lock_guard guard(registrationMutex);
  // If there is no memory for the handlers, forks work without them.
  if (firstLock == nullptr) pthread_atfork(Prepare, Finish, Finish);
  std::atomic<ForkSafeLock*>* place = &firstLock;
  ForkSafeLock* next = *place;
  while (next != nullptr && next->_stage <= lock._stage) {
    place = &next->_next;
    next = *place;
  }
  lock._next = next;
  *place = &lock;
}

void ForkRegistration::Prepare() {
  for (ForkSafeLock* lock = firstLock; lock != nullptr; lock = lock->_next) {
    lock->BeforeFork();
    lock->_forker = pthread_self();
  }
}

void ForkRegistration::Finish() {
  for (ForkSafeLock* lock = firstLock; lock != nullptr; lock = lock->_next) {
    if (pthread_equal(lock->_forker, pthread_self()) == 0) continue;
    lock->_forker = pthread_t{};
    lock->AfterFork();
  }
}

void ForkSafeMutex::lock() {
  if (pthread_equal(_holder.load(std::memory_order_relaxed), pthread_self()) == 0) {
    _mutex.lock();
    _holder.store(pthread_self(), std::memory_order_relaxed);
  }
  ++_depth;
}

void ForkSafeMutex::unlock() {
  if (--_depth > 0) return;
  _holder.store(pthread_t{}, std::memory_order_relaxed);
  _mutex.unlock();
}

}  // namespace vor
