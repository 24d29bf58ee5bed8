#include "thread/TAThread.h"

#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>
#include <vector>

#include "base/ForkSafeLock.h"
#include "base/NeverDestroyed.h"
#include "base/ScopedLock.h"
#include "process/TAProcess.h"
#include "thread/TAThreadLock.h"

// The registry of threads
//
// `running` has an entry for each start until the run that it began has left; `toDelete` has the
// detached threads that have left.  `lock` guards both.
//
// Each object has a run lock.  A start enters the object in `running`, takes its run lock and makes
// the thread; the thread releases the run lock when its function has returned, then takes `lock`
// and leaves the registry.  So a second start of an object waits for the first run, and WaitForAll
// waits for a run by taking its lock.
//
// Nobody waits for a run lock while it holds `lock`: a function that runs may itself create and
// start threads, which needs `lock`.  So the two locks cannot deadlock.
//
// Who may delete an object, and when:
// - A joinable one belongs to its owner, who deletes it when WaitForAll has returned, that is, when
//   it has left.  So a thread does not touch its object after it has left, and WaitForAll, which
//   may still be waiting on another thread of the tool, touches no object at all: `runLocks` shares
//   the ownership of the run locks.  This also keeps WaitForAll safe after a start that failed; the
//   entry stays in `running`, but the owner may have deleted the object.
// - A detached one is deleted by the thread that takes it out of `toDelete`.  The last of its runs
//   to leave queues it, in the same step, so that it is in one of the lists until it is deleted.
// - Objects are deleted without a lock, since destructors of the tool may use threads.
//
// After exitCalled a thread that finishes keeps `lock` for ever, so that no thread touches the
// registry while the process exits.  A fork therefore waits for the locks of the registry only
// until then.

namespace {

// This lock exists in every process, with threads or without, so it creates no arena.
class RegistryLock final : public TAThreadLock {
 public:
  constexpr RegistryLock() : TAThreadLock(WithoutArena()) {}

  // Returns false if the process exits and another thread has the lock.
  bool TakeUnlessExiting() {
    while (!TryLock()) {
      if (std::atomic_ref(TAThread::exitIsCalled).load() != 0) return false;
    }
    return true;
  }
};

constinit vor::NeverDestroyed<RegistryLock> registryLock;
constinit vor::NeverDestroyed<RegistryLock> deletionLock;
constinit vor::NeverDestroyed<VorListPtrTAThread> runningThreads;
constinit vor::NeverDestroyed<VorListPtrTAThread> finishedThreads;

// The run locks of the entries of `running`, at the same places.
using RunLocks = std::vector<std::shared_ptr<TAThreadLock>>;
constinit vor::NeverDestroyed<RunLocks> runLocks;

// The locks of the registry, for forks.
class RegistryForks final : public vor::ForkSafeLock {
 public:
  constexpr RegistryForks() : ForkSafeLock(vor::ForkStage::kRegistry) {}

 private:
  void BeforeFork() override {
    _hasDeletionLock = deletionLock.object.TakeUnlessExiting();
    _hasLock = registryLock.object.TakeUnlessExiting();
    if (_hasLock) _parent = getpid();
  }

  void AfterFork() override {
    if (_hasLock) {
      if (getpid() != _parent) ForgetThreads();
      registryLock.object.ReleaseLock();
    }
    if (_hasDeletionLock) deletionLock.object.ReleaseLock();
  }

  // The child has none of its parent's threads.
  static void ForgetThreads() {
    TAThread::running.RemoveAll(VorCollec::KeepMemory);
    runLocks.object.clear();
  }

  pid_t _parent = 0;  // under the lock
  bool _hasDeletionLock = false;
  bool _hasLock = false;
};

constinit RegistryForks registryForks;
const vor::ForkRegistration registryForksRegistration(registryForks);

struct ExitNotice {
  ~ExitNotice() { TAThread::exitCalled(); }
} exitNotice;

// Hands the detached threads that have left over to the caller, who deletes them.
VorListPtrTAThread TakeFinished() {
  const vor::ScopedLock holder(TAThread::lock);
  const VorListPtrTAThread finished(TAThread::toDelete);
  TAThread::toDelete.RemoveAll(VorCollec::KeepMemory);
  return finished;
}

void DeleteAll(const VorListPtrTAThread& finished) {
  for (int i = 1; i <= finished.Size(); ++i) delete finished[i];
}

}  // namespace

constinit VorListPtrTAThread& TAThread::running = runningThreads.object;
constinit TAThreadLock& TAThread::lock = registryLock.object;
constinit VorListPtrTAThread& TAThread::toDelete = finishedThreads.object;
constinit TAThreadLock& TAThread::_lockOnDelete = deletionLock.object;
constinit int TAThread::exitIsCalled = 0;

TAThread::TAThread() : TAThread(nullptr) {}

TAThread::TAThread(Function func) : _runLock(std::make_shared<TAThreadLock>()), _func(func) {
  Cleanup();
}

TAThread::~TAThread() = default;

void TAThread::SetFunc(Function func) {
  _func = func;
}

// The arguments end before the first null pointer, but there is always a first one.
const char** TAThread::StoreArgs(const void* const* pointers) noexcept {
  _argv.clear();
  do {
    _argv.push_back(static_cast<const char*>(*pointers++));
  } while (*pointers != nullptr);
  _argv.push_back(nullptr);
  return _argv.data();
}

int TAThread::Start() noexcept {
  return StartTask(false);
}

int TAThread::StartDetach() noexcept {
  return StartTask(true);
}

int TAThread::StartTask(bool isDetached) {
  Cleanup();
  {
    const vor::ScopedLock holder(lock);
    _isDetached = isDetached;
    running.Append(this);
    runLocks.object.push_back(_runLock);
  }
  _runLock->GetLock();  // waits for an earlier run of this object; released by the new one
  try {
    // The object may be deleted as soon as its thread exists.
    std::thread(_ThreadEntryPoint, static_cast<void*>(this)).detach();
  } catch (const std::exception&) {  // no thread or no memory for it
    return 1;
  }
  return 0;
}

void TAThread::Run() {
  if (_func != nullptr) {
    _func(_argv.empty() ? 0 : static_cast<int>(_argv.size()) - 1, _argv.data());
  } else {
    printf("TAThread::Run No function to run !\n");
  }
  _runLock->ReleaseLock();

  lock.GetLock();
  if (std::atomic_ref(exitIsCalled).load() != 0) return;  // with the lock held
  Leave();
  lock.ReleaseLock();
}

// Removes the last entry of this object, with the lock held.  After that the object may be deleted
// as soon as the lock is free.
void TAThread::Leave() {
  RunLocks& locks = runLocks.object;
  const auto last = std::find(locks.rbegin(), locks.rend(), _runLock);
  if (last != locks.rend()) {
    running.RemovePosition(static_cast<int>(locks.rend() - last));
    locks.erase(last.base() - 1);
  }
  const bool isStartedAgain = std::find(locks.begin(), locks.end(), _runLock) != locks.end();
  if (_isDetached && !isStartedAgain) toDelete.Append(this);
}

void _ThreadEntryPoint(void* object) {
  static_cast<TAThread*>(object)->Run();
}

void TAThread::Cleanup() {
  DeleteAll(TakeFinished());
  TAProcess::ZombiClean();
}

void TAThread::WaitForAll() {
  for (;;) {
    lock.GetLock();
    const std::shared_ptr<TAThreadLock> runLock =
        runLocks.object.empty() ? nullptr : runLocks.object.back();
    lock.ReleaseLock();
    if (runLock == nullptr) break;
    runLock->GetLock();
    runLock->ReleaseLock();
    std::this_thread::yield();  // to the thread that leaves now
  }
  _lockOnDelete.GetLock();
  const VorListPtrTAThread finished = TakeFinished();
  _lockOnDelete.ReleaseLock();
  DeleteAll(finished);
}

int TAThread::exitCalled() {
  std::atomic_ref(exitIsCalled).store(1);
  return 1;
}
