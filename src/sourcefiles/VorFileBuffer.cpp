#include "sourcefiles/VorFileBuffer.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "base/MutexHolder.h"
#include "sourcefiles/VorFileBufferPoolThread.h"
#include "sourcefiles/WholeFile.h"

namespace {

// Locks a buffer for a change of its subscribers, unless this very thread holds the lock already,
// because it sends them the event.
class SubscriberLock {
 public:
  SubscriberLock(VorMutex& mutex, const std::atomic<std::thread::id>& announcer)
      : _mutex(announcer == std::this_thread::get_id() ? nullptr : &mutex) {
    if (_mutex != nullptr) _mutex->Lock();
  }
  SubscriberLock(const SubscriberLock&) = delete;
  SubscriberLock& operator=(const SubscriberLock&) = delete;
  ~SubscriberLock() {
    if (_mutex != nullptr) _mutex->Unlock();
  }

 private:
  VorMutex* const _mutex;
};

}  // namespace

VorFileBuffer::VorFileBuffer(const char* name) : _name(name == nullptr ? nullptr : strdup(name)) {}

VorFileBuffer::~VorFileBuffer() {
  _leaveParentsLoader();
  _leaveLoader();
  free(_text);
  free(_name);
}

char* VorFileBuffer::getBuffer() {
  if (isLoaded() == 0) loadFile();
  return _text;
}

int VorFileBuffer::getBufferSize() {
  if (isLoaded() == 0) loadFile();
  return _size;
}

void VorFileBuffer::loadFile() noexcept {
  const vor::MutexHolder holder(_mutex);
  if (isLoaded() != 0) return;
  if (_name != nullptr && isDestroyed() == 0) {
    vor::WholeFile file = vor::ReadWholeFile(_name);
    if (file.missingMemory > 0) {
      printf("# Error: malloc failed in VorFileBuffer::loadFile (size: %d)\n", file.missingMemory);
    }
    _size = file.size;
    _text = file.text.release();
  }
  _isLoaded.store(1, std::memory_order_release);
}

void VorFileBuffer::AddSubscriber(TACallbackSubscriber* subscriber) {
  const SubscriberLock lock(_mutex, _announcer);
  TACallbackPublisher::AddSubscriber(subscriber);
}

void VorFileBuffer::RemoveSubscriber(TACallbackSubscriber* subscriber) {
  const SubscriberLock lock(_mutex, _announcer);
  TACallbackPublisher::RemoveSubscriber(subscriber);
}

void VorFileBuffer::AddRef() {
  const vor::MutexHolder holder(_mutex);
  ++_count;
}

int VorFileBuffer::Release() {
  {
    const vor::MutexHolder holder(_mutex);
    const int count = --_count;
    if (count != 0) return count;
    _dropText();
  }
  delete this;
  return 0;
}

void VorFileBuffer::destroy() {
  {
    const vor::MutexHolder holder(_mutex);
    _dropText();
  }
  Release();
}

// With the lock held.
void VorFileBuffer::_dropText() {
  _isDestroyed = 1;
  if (_text == nullptr) return;
  _leaveParentsLoader();
  _announcer = std::this_thread::get_id();
  SendCallback(&_deletion);
  _announcer = std::thread::id();
  _leaveLoader();
  free(_text.exchange(nullptr));
  _size = 0;
}

// What follows is for the pool thread that has loaded the text.

// Takes a reference without the lock, unless the last one has been given back.
bool VorFileBuffer::_addRefIfAlive() {
  int count = _count;
  while (count > 0 && !_count.compare_exchange_weak(count, count + 1)) {
  }
  return count > 0;
}

// Subscribes the thread and has it count the text, in one step, so that it hears of the release of
// all that it counts.  A text that is gone already, or that another pool counts, is not counted.
void VorFileBuffer::_addLoader(VorFileBufferPoolThread* loader) {
  const vor::MutexHolder holder(_mutex);
  if (_text == nullptr || _loader != nullptr) return;
  _loader = loader;
  _loaderProcess = getpid();
  TACallbackPublisher::AddSubscriber(loader);
  loader->_countText(this, _size);
}

void VorFileBuffer::_removeLoader(VorFileBufferPoolThread* loader) {
  const vor::MutexHolder holder(_mutex);
  if (_loader != loader) return;  // the text was released meanwhile
  TACallbackPublisher::RemoveSubscriber(loader);
  _leaveLoader();
}

// The thread may end from here on.
void VorFileBuffer::_leaveLoader() {
  if (_loader != nullptr) _loader->_forgetText(this);
  _loader = nullptr;
}

// In a child made by fork the thread is its parent's: its locks may be held for ever, and it may
// have been destroyed with its pool.
void VorFileBuffer::_leaveParentsLoader() {
  if (_loader == nullptr || _loaderProcess == getpid()) return;
  TACallbackPublisher::RemoveSubscriber(_loader);
  _loader = nullptr;
}
