#include "sourcefiles/VorFileBuffer.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <utility>

#include "base/OwnedText.h"
#include "base/PosixFile.h"
#include "base/ScopedLock.h"
#include "sourcefiles/VorFileBufferPoolThread.h"
#include "sourcefiles/WholeFile.h"

VorFileBuffer::VorFileBuffer(const char* name) {
  if (name != nullptr) _name.emplace(name);
}

VorFileBuffer::~VorFileBuffer() {
  _leaveLoader();
  const vor::OwnedText text(_text);
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
  const vor::ScopedLock holder(_mutex);
  if (isLoaded() != 0) return;
  _read(_name ? vor::OpenFile(_name->c_str(), O_RDONLY) : vor::FileDescriptor());
}

// With the lock held.
void VorFileBuffer::_read(const vor::FileDescriptor& file) {
  if (file.IsOpen() && isDestroyed() == 0) {
    vor::WholeFile whole = vor::ReadWholeFile(file);
    if (whole.missingMemory > 0) {
      printf("# Error: malloc failed in VorFileBuffer::loadFile (size: %d)\n", whole.missingMemory);
    }
    _size = whole.size;
    _text = whole.text.release();
  }
  _isLoaded.store(1, std::memory_order_release);
}

void VorFileBuffer::AddSubscriber(TACallbackSubscriber* subscriber) {
  std::optional<vor::ScopedLock<VorMutex>> holder;
  if (!_isAnnouncing()) holder.emplace(_mutex);
  TACallbackPublisher::AddSubscriber(subscriber);
}

void VorFileBuffer::RemoveSubscriber(TACallbackSubscriber* subscriber) {
  std::optional<vor::ScopedLock<VorMutex>> holder;
  if (!_isAnnouncing()) holder.emplace(_mutex);
  TACallbackPublisher::RemoveSubscriber(subscriber);
}

void VorFileBuffer::AddRef() {
  ++_count;
}

int VorFileBuffer::Release() {
  const int count = --_count;
  if (count != 0) return count;
  {
    const vor::ScopedLock holder(_mutex);
    _dropText();
  }
  delete this;
  return 0;
}

void VorFileBuffer::destroy() {
  {
    const vor::ScopedLock holder(_mutex);
    _dropText();
  }
  Release();
}

// With the lock held.
void VorFileBuffer::_dropText() {
  _isDestroyed = 1;
  if (_text == nullptr) return;
  if (_loaderProcess != getpid()) _leaveLoader();
  _announcer = std::this_thread::get_id();
  SendCallback(&_deletion);
  _announcer = std::thread::id();
  _leaveLoader();
  const vor::OwnedText text(_text.exchange(nullptr));
  _size = 0;
}

// Whether this thread holds the lock already, because it sends the event.
bool VorFileBuffer::_isAnnouncing() const {
  return _announcer == std::this_thread::get_id();
}

// The following operations are for the pool thread that loads the text.

// Takes a reference, unless the last one was released.
bool VorFileBuffer::_addRefIfAlive() {
  int count = _count;
  while (count > 0 && !_count.compare_exchange_weak(count, count + 1)) {
  }
  return count > 0;
}

// As loadFile, but false for a pipe or a device, whose reading has no limit of time.  It is left to
// a consumer, and the lock is not taken: that consumer may hold it all the time.
bool VorFileBuffer::_loadAhead() noexcept {
  std::optional<vor::FileDescriptor> file(std::in_place);
  if (_name) file = vor::OpenWithoutWaiting(_name->c_str());
  if (!file) return false;
  const vor::ScopedLock holder(_mutex);
  if (isLoaded() == 0) _read(*file);
  return true;
}

// Subscribes the thread and has it count the text, in one step, so that it receives the release of
// all that it counts.  A buffer without text counts 0.
void VorFileBuffer::_addLoader(VorFileBufferPoolThread* loader) {
  const vor::ScopedLock holder(_mutex);
  if (_loader != nullptr) return;  // another pool has loaded it meanwhile
  _loader = loader;
  _loaderProcess = getpid();
  TACallbackPublisher::AddSubscriber(loader);
  loader->_countText(this, _size);
}

void VorFileBuffer::_removeLoader(VorFileBufferPoolThread* loader) {
  const vor::ScopedLock holder(_mutex);
  if (_loader == loader) _leaveLoader();  // else the text was released meanwhile
}

// Unsubscribes the thread, which may end from here on.  In a child made by fork the thread is its
// parent's and is not touched: its locks may stay held, and its pool may be gone.
void VorFileBuffer::_leaveLoader() {
  if (_loader == nullptr) return;
  TACallbackPublisher::RemoveSubscriber(_loader);
  VorFileBufferPoolThread* const loader = std::exchange(_loader, nullptr);
  if (_loaderProcess == getpid()) loader->_forgetText(this);
}
