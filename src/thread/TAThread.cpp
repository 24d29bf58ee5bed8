#include "thread/TAThread.h"

#include <stdio.h>

#include <atomic>
#include <exception>
#include <thread>

#include "base/ListSearch.h"
#include "base/NamedLists.h"
#include "process/TAProcess.h"
#include "thread/TAThreadLock.h"

namespace {

// The account of all threads.
struct Registry {
  TAThreadLock lock;  // guards the lists
  VorListPtrTAThread running;
  VorListPtrTAThread toDelete;          // detached and finished
  std::atomic<unsigned> leaveCount{0};  // how often a thread was struck off
};

// The process has begun to exit.  No part of the registry, which a process without threads lacks.
constinit std::atomic<bool> exitIsCalled{false};

// Made by the first thread object and never destroyed: threads may finish after the static objects
// are gone.
Registry& TheRegistry() noexcept {
  static Registry* const registry = new Registry;
  return *registry;
}

struct ExitNotice {
  ~ExitNotice() { TAThread::exitCalled(); }
} exitNotice;

// Outside of the lock, since a destructor of the tool may make threads itself.
void DeleteAll(const VorListPtrTAThread& finished) {
  for (int i = 1; i <= finished.Size(); ++i) delete finished[i];
}

// Hands over the detached threads that have finished; their destruction is up to the caller.
VorListPtrTAThread TakeFinished(Registry& registry) noexcept {
  registry.lock.GetLock();
  VorListPtrTAThread finished(registry.toDelete);
  registry.toDelete.RemoveAll(VorCollec::ReleaseMemory);
  registry.lock.ReleaseLock();
  return finished;
}

}  // namespace

TAThread::TAThread() : TAThread(nullptr) {}

TAThread::TAThread(Function func) : _func(func) {
  Cleanup();
}

TAThread::~TAThread() = default;

void TAThread::SetFunc(Function func) {
  _func = func;
}

// The pointers end at the first null one behind the first.
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
  _isDetached = isDetached;
  Cleanup();
  Registry& registry = TheRegistry();
  registry.lock.GetLock();
  registry.running.Append(this);
  registry.lock.ReleaseLock();
  // Once there is a thread this object is not touched here any more: it may be deleted already.
  try {
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

  Registry& registry = TheRegistry();
  registry.lock.GetLock();
  if (exitIsCalled) return;  // with the lock held
  // Queued before it counts as gone.  Without the lock the object may be deleted at once.
  if (_isDetached) registry.toDelete.Append(this);
  vor::RemoveFromList(registry.running, this);
  ++registry.leaveCount;
  registry.lock.ReleaseLock();
}

void _ThreadEntryPoint(void* object) {
  static_cast<TAThread*>(object)->Run();
}

void TAThread::Cleanup() {
  DeleteAll(TakeFinished(TheRegistry()));
  TAProcess::ZombiClean();
}

void TAThread::WaitForAll() {
  Registry& registry = TheRegistry();
  for (;;) {
    const unsigned seen = registry.leaveCount;
    registry.lock.GetLock();
    const bool isEmpty = registry.running.Size() == 0;
    registry.lock.ReleaseLock();
    if (isEmpty) break;
    // Without the lock: threads that run may start others meanwhile.
    while (registry.leaveCount.load(std::memory_order_acquire) == seen) {
    }
  }
  DeleteAll(TakeFinished(registry));
}

int TAThread::exitCalled() {
  exitIsCalled = true;
  return 1;
}
