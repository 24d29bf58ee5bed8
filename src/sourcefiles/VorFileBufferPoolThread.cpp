#include "sourcefiles/VorFileBufferPoolThread.h"

#include <string.h>

#include <atomic>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "base/MutexHolder.h"
#include "base/NamedLists.h"
#include "sourcefiles/Gate.h"
#include "sourcefiles/TAEvent.h"
#include "sourcefiles/VorFileBuffer.h"

// Order of the locks: the work lock, the lock of a buffer, then one of the others, of which only
// the sleep lock is taken inside another one, the incoming lock.  No buffer is locked, and so none
// released, with any but the work lock held: a buffer may be locked for as long as its file is
// read, and a ReceiveCallback may append to this thread.

struct VorFileBufferPoolThread::State {
  explicit State(int limit) : ceiling(limit) {}

  std::atomic<bool> isStopping{false};

  const int ceiling;       // bytes
  VorMutex sizeLock;       // guards the next two
  std::int64_t total = 0;  // bytes; a batch may take it beyond what an int can count
  std::unordered_map<VorFileBuffer*, int> loaded;  // with what of the total they still stand for
  vor::Gate memoryGate;                            // closed while the ceiling is reached
  vor::Gate forgottenGate;                         // opened when a buffer leaves the loaded ones

  VorMutex sleepLock;  // guards the flag
  bool isSleeping = true;
  vor::Gate wakeGate{true};  // closed while the thread sleeps

  VorMutex workLock;  // held by the thread for a whole pass
  VorListPtrVorFileBuffer work;

  VorMutex incomingLock;
  VorListPtrVorFileBuffer incoming;

  void Wake() {
    const vor::MutexHolder holder(sleepLock);
    if (!isSleeping) return;
    isSleeping = false;
    wakeGate.Open();
  }
  void FallAsleep() {
    const vor::MutexHolder holder(sleepLock);
    isSleeping = true;
    wakeGate.Close();
  }
  bool IsSleeping() {
    const vor::MutexHolder holder(sleepLock);
    return isSleeping;
  }
  bool IsCeilingReached() {
    const vor::MutexHolder holder(sizeLock);
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
  const vor::MutexHolder holder(lock);
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
    static_cast<void>(_state.release());  // its locks may be held, and its gates be waited for
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

// False when it is time to end.
bool VorFileBufferPoolThread::_pass() {
  const vor::MutexHolder holder(_state->workLock);
  if (_state->isStopping) return false;
  if (_state->IsSleeping()) _state->wakeGate.Pass();
  if (_state->isStopping) return false;
  if (_state->IsCeilingReached()) _state->memoryGate.Pass();
  if (_state->isStopping) return false;
  return !_takeIncoming() || _loadBatch();
}

// Moves what was appended, in reverse, to the work list.  False if there is nothing to do, in which
// case the thread sleeps next.
bool VorFileBufferPoolThread::_takeIncoming() {
  const vor::MutexHolder holder(_state->incomingLock);
  for (int i = _state->incoming.Size(); i > 0; --i) _state->work.Append(_state->incoming[i]);
  _state->incoming.RemoveAll(VorCollec::KeepMemory);
  if (_state->work.Size() > 0) return true;
  _state
      ->FallAsleep();  // with the incoming lock held, so that whoever appends next finds it asleep
  return false;
}

// From the last to the first, which is the order in which they were appended.
bool VorFileBufferPoolThread::_loadBatch() {
  for (int i = _state->work.Size(); i > 0; --i) {
    if (_state->isStopping) return false;
    VorFileBuffer* const buffer = _state->work[i];
    _state->work.RemovePosition(i);
    if (buffer->isDestroyed() == 0 && buffer->isLoaded() == 0) {
      buffer->loadFile();
      buffer->_addLoader(this);
    }
    buffer->Release();
  }
  return true;
}

// Unsubscribes from the buffers that outlive the thread.  One whose last reference has gone is
// about to leave by itself, and is waited for.
void VorFileBufferPoolThread::_leaveBuffers() {
  for (;;) {
    VorFileBuffer* buffer = nullptr;
    {
      // A buffer that is among the loaded ones cannot go away without this lock.
      const vor::MutexHolder holder(_state->sizeLock);
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
    const vor::MutexHolder holder(_state->incomingLock);
    // Asked again: Stop empties the list after it has set the flag, and nothing may come later.
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
  const vor::MutexHolder holder(_state->sizeLock);
  _state->CountOff(size);
  const auto found = _state->loaded.find(buffer);
  if (found != _state->loaded.end()) found->second = 0;
  return 0;
}

void VorFileBufferPoolThread::_countText(VorFileBuffer* buffer, int size) noexcept {
  const vor::MutexHolder holder(_state->sizeLock);
  _state->loaded.emplace(buffer, size);
  _state->total += size;
  if (_state->total >= _state->ceiling) _state->memoryGate.Close();
}

// Without the lock held no more the thread may be gone, so this is the last that a buffer does with
// it.  A delivery that skipped this thread is made up for.
void VorFileBufferPoolThread::_forgetText(VorFileBuffer* buffer) {
  const vor::MutexHolder holder(_state->sizeLock);
  const auto found = _state->loaded.find(buffer);
  if (found == _state->loaded.end()) return;
  _state->CountOff(found->second);
  _state->loaded.erase(found);
  _state->forgottenGate.Open();
}
