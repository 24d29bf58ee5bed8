#ifndef VOR_BASE_FORKSAFELOCK_H
#define VOR_BASE_FORKSAFELOCK_H

#include <pthread.h>

#include <atomic>
#include <mutex>

namespace vor {

/// The order of the process-wide locks.  A fork locks all of them in this order.  A thread that
/// holds one of them may lock only those of later stages.  It must not fork, unless the only lock
/// that it holds is of the first stage.
enum class ForkStage {
  kTool,  // a tool may hold it while it calls any other service
  kRegistry,
  kService,
  kLeaf
};

/// A process-wide lock that is held during a fork and released in parent and child.  The child of
/// a process with threads therefore finds the lock free and its data consistent.
///
/// An object is constant-initialised and lives until the process ends.  Define and register it in
/// one source file:
///
///     constinit vor::ForkSafeMutex mutex(vor::ForkStage::kLeaf);
///     const vor::ForkRegistration registration(mutex);
class ForkSafeLock {
 public:
  constexpr explicit ForkSafeLock(ForkStage stage) : _stage(stage) {}
  ForkSafeLock(const ForkSafeLock&) = delete;
  ForkSafeLock& operator=(const ForkSafeLock&) = delete;

 protected:
  ~ForkSafeLock() = default;

 private:
  friend class ForkRegistration;
  /// Locks on the thread that forks.
  virtual void BeforeFork() = 0;
  /// Unlocks on that thread, in the parent and in the child.
  virtual void AfterFork() = 0;

  const ForkStage _stage;
  std::atomic<ForkSafeLock*> _next{nullptr};  // in the order of stages
  std::atomic<pthread_t> _forker{};           // whose fork holds it; pthread_t{}: none
};

/// Registers a lock, so that each fork holds it.  For static objects only.  The registering thread
/// must hold no process-wide lock.
class ForkRegistration {
 public:
  explicit ForkRegistration(ForkSafeLock& lock);

 private:
  static void Prepare();
  static void Finish();
};

/// A recursive ForkSafeLock, for std::lock_guard.
class ForkSafeMutex final : public ForkSafeLock {
 public:
  using ForkSafeLock::ForkSafeLock;

  void lock();
  void unlock();

 private:
  void BeforeFork() override { lock(); }
  void AfterFork() override { unlock(); }

  std::mutex _mutex;
  std::atomic<pthread_t> _holder{};  // 0 for none
  int _depth = 0;                    // how often the holder has locked it
};

}  // namespace vor

#endif  // VOR_BASE_FORKSAFELOCK_H
