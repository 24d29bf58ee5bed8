#include "sourcefiles/VorFileBufferPoolThread.h"

#include <string.h>

#include <atomic>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "base/ScopedLock.h"
#include "sourcefiles/Gate.h"
#include "sourcefiles/TAEvent.h"
#include "sourcefiles/VorFileBuffer.h"

// The thread makes passes.  In each it waits at two gates, takes what was appended and loads it:
//
//     append --> incoming list --(a pass begins)--> work list --> loadFile, subscribe, count
//
// - The wake gate is closed while the thread sleeps, which it does once both lists are empty.
//   append and Stop open it.
// - The memory gate is closed while the total of the loaded texts is not below the ceiling.  The
//   release of a text subtracts its size from the total and opens the gate; Stop opens it too.
//
// The thread adds the size of each text that it loads to the total, and the deletion event of the
// buffer subtracts it.  If another subscriber removes itself during the delivery, the event skips
// this thread.  So a buffer that leaves subtracts its size then, if it is still counted.
//
// A buffer may outlive the thread, and the thread a buffer.  `loaded` therefore holds every buffer
// to which the thread is subscribed.  A buffer leaves it, with the size lock held, before it is
// deleted; the thread unsubscribes from all of them before it ends.
//
// Order of the locks: the work lock, the lock of a buffer, then one of the others.  Of these only
// the sleep lock is taken inside another one, the incoming lock.  A buffer is locked, and the last
// reference to one released, with none but the work lock held: its lock may be held for as long as
// its file is read, and a ReceiveCallback may append to this thread.

struct VorFileBufferPoolThread::State {
  explicit State(int limit) : ceiling(limit) {}

  std::atomic<bool> isStopping{false};

  const int ceiling;       // bytes
  VorMutex sizeLock;       // guards the next two
  std::int64_t total = 0;  // bytes; a batch may take it beyond what an int can count
  std::unordered_map<VorFileBuffer*, int> loaded;  // with the bytes that are still counted for it
  vor::Gate memoryGate;                            // closed while the ceiling is reached
  vor::Gate forgottenGate;                         // opened when a buffer leaves `loaded`

  VorMutex sleepLock;  // guards the flag
  bool isSleeping = true;
  vor::Gate wakeGate{true};  // closed while the thread sleeps

  VorMutex workLock;  // held by the thread for a whole pass
  VorListPtrVorFileBuffer work;

  VorMutex incomingLock;
  VorListPtrVorFileBuffer incoming;

  void Wake() {
    const vor::ScopedLock holder(sleepLock);
    if (!isSleeping) return;
    isSleeping = false;
    wakeGate.Open();
  }
  void FallAsleep() {
    const vor::ScopedLock holder(sleepLock);
    isSleeping = true;
    wakeGate.Close();
  }
  bool IsSleeping() {
    const vor::ScopedLock holder(sleepLock);
    return isSleeping;
  }
  bool IsCeilingReached() {
    const vor::ScopedLock holder(sizeLock);
    return total >= ceiling;
  }
  // With the size lock held.
  void CountOff(int size) {
    const bool wasReached = total >= ceiling;
    total -= size;
    if (wasReached && total < ceiling) memoryGate.Open();
  }
};

namespace {

VorListPtrVorFileBuffer TakeAll(VorListPtrVorFileBuffer& list, VorMutex& lock) {
  const vor::ScopedLock holder(lock);
  VorListPtrVorFileBuffer taken;
  std::swap(taken, list);
  return taken;
}

void ReleaseAll(const VorListPtrVorFileBuffer& buffers) {
  for (int i = buffers.Size(); i > 0; --i) buffers[i]->Release();
}

}  // namespace

VorFileBufferPoolThread::VorFileBufferPoolThread(int ceiling)
    : VorThreads("FileBufferPoolThread"), _state(std::make_unique<State>(ceiling)) {}

VorFileBufferPoolThread::~VorFileBufferPoolThread() {
  if (IsParents()) {
    static_cast<void>(_state.release());  // its locks may be held, and threads wait at its gates
    return;
  }
  VorFileBufferPoolThread::Stop();
  Wait();
}

int VorFileBufferPoolThread::Begin(void*) {
  while (_pass()) {
  }
  _leaveBuffers();
  return 0;
}

// False if the thread must end.
bool VorFileBufferPoolThread::_pass() {
  const vor::ScopedLock holder(_state->workLock);
  if (_state->isStopping) return false;
  if (_state->IsSleeping()) _state->wakeGate.Pass();
  if (_state->isStopping) return false;
  if (_state->IsCeilingReached()) _state->memoryGate.Pass();
  if (_state->isStopping) return false;
  return !_takeIncoming() || _loadBatch();
}

// Moves what was appended, in reverse, to the work list.  False if there is nothing to do: the
// thread sleeps next.
bool VorFileBufferPoolThread::_takeIncoming() {
  const vor::ScopedLock holder(_state->incomingLock);
  for (int i = _state->incoming.Size(); i > 0; --i) _state->work.Append(_state->incoming[i]);
  _state->incoming.RemoveAll(VorCollec::KeepMemory);
  if (_state->work.Size() > 0) return true;
  // With the incoming lock held, so that the next append finds the thread asleep.
  _state->FallAsleep();
  return false;
}

// From the last to the first, which is the order in which they were appended.
bool VorFileBufferPoolThread::_loadBatch() {
  for (int i = _state->work.Size(); i > 0; --i) {
    if (_state->isStopping) return false;
    VorFileBuffer* const buffer = _state->work[i];
    _state->work.RemovePosition(i);
    if (buffer->isDestroyed() == 0 && buffer->isLoaded() == 0 && buffer->_loadAhead()) {
      buffer->_addLoader(this);
    }
    buffer->Release();
  }
  return true;
}

// Unsubscribes from the buffers that outlive the thread.  A buffer whose last reference is gone is
// about to leave by itself; the thread waits for it.
void VorFileBufferPoolThread::_leaveBuffers() {
  for (;;) {
    VorFileBuffer* buffer = nullptr;
    {
      // With this lock held no buffer leaves `loaded`, so none of them goes away.
      const vor::ScopedLock holder(_state->sizeLock);
      if (_state->loaded.empty()) return;
      buffer = _state->loaded.begin()->first;
      if (!buffer->_addRefIfAlive()) {
        buffer = nullptr;
        _state->forgottenGate.Close();
      }
    }
    if (buffer == nullptr) {
      _state->forgottenGate.Pass();
    } else {
      buffer->_removeLoader(this);
      buffer->Release();
    }
  }
}

void VorFileBufferPoolThread::Stop() {
  if (IsParents()) return;
  _state->isStopping = true;
  _state->Wake();
  if (_state->IsCeilingReached()) _state->memoryGate.Open();
  ReleaseAll(TakeAll(_state->incoming, _state->incomingLock));
  ReleaseAll(TakeAll(_state->work, _state->workLock));
}

void VorFileBufferPoolThread::append(VorFileBuffer* buffer) {
  if (buffer == nullptr || _state->isStopping || IsParents()) return;
  buffer->AddRef();
  bool isRefused = false;
  {
    const vor::ScopedLock holder(_state->incomingLock);
    // Checked again: Stop sets the flag, then empties the list, and nothing must be appended after
    // that.
    isRefused = _state->isStopping;
    if (!isRefused) {
      _state->incoming.Append(buffer);
      _state->Wake();
    }
  }
  if (isRefused) buffer->Release();
}

int VorFileBufferPoolThread::ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) {
  if (event == nullptr || strcmp(event->GetEventName(), "EventBufferDeletion") != 0) return 0;
  auto* const buffer = static_cast<VorFileBuffer*>(publisher);
  const int size = buffer->getBufferSize();
  const vor::ScopedLock holder(_state->sizeLock);
  _state->CountOff(size);
  const auto found = _state->loaded.find(buffer);
  if (found != _state->loaded.end()) found->second = 0;
  return 0;
}

void VorFileBufferPoolThread::_countText(VorFileBuffer* buffer, int size) noexcept {
  const vor::ScopedLock holder(_state->sizeLock);
  _state->loaded.emplace(buffer, size);
  _state->total += size;
  if (_state->total >= _state->ceiling) _state->memoryGate.Close();
}

// The last access of a buffer to this thread, which may be deleted once the lock is released.
// Subtracts the size here if the event skipped the thread.
void VorFileBufferPoolThread::_forgetText(VorFileBuffer* buffer) {
  const vor::ScopedLock holder(_state->sizeLock);
  const auto found = _state->loaded.find(buffer);
  if (found == _state->loaded.end()) return;
  _state->CountOff(found->second);
  _state->loaded.erase(found);
  _state->forgottenGate.Open();
}
