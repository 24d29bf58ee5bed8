#include "sourcefiles/TAFileBuffer.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "base/NamedLists.h"
#include "base/PosixFile.h"
#include "filenames/TAFileName.h"
#include "sourcefiles/Gate.h"
#include "sourcefiles/WholeFile.h"
#include "thread/IrixLockDriver.h"
#include "thread/LockHolder.h"
#include "thread/TAThreadLock.h"

namespace {

constexpr int kOverload = 0x9C4000;  // bytes

// There in every process, with a loop or without: the arena is made when it is first taken.
class LoopLock : public TAThreadLock {
 public:
  LoopLock() : TAThreadLock(WithoutArena()) {}

  int GetLock() override {
    irixLockDriver.ActivateDriver();
    return TAThreadLock::GetLock();
  }
};

// A lock whose waiters sleep, since the loop may wait for hours; so it needs no arena.
class SleepingLock : public TAThreadLock {
 public:
  SleepingLock() : TAThreadLock(WithoutArena()) {}

  int GetLock() override {
    _gate.PassAndClose();
    return 1;
  }
  int ReleaseLock() override {
    _gate.Open();
    return 1;
  }

 private:
  vor::Gate _gate;
};

// The process that runs the loop.
std::atomic<pid_t> loopProcess{0};

struct ExitNotice {
  // A child made by fork has no loop to end, and the lock may have been held when it was made.
  ~ExitNotice() {
    if (loopProcess != getpid()) return;
    ForgetList();
    TAFileBuffer::ASyncCleanup();
  }

  // A loop that wakes up now must not look into it: the static objects of the tool are gone.
  static void ForgetList() {
    const vor::LockHolder holder(TAFileBuffer::ASyncLock);
    TAFileBuffer::ASyncLoadList = nullptr;
  }
} exitNotice;

// With the lock held.
TAFileBuffer* FirstOfList() {
  const VorListPtrTAFileBuffer* const list = TAFileBuffer::ASyncLoadList;
  return list == nullptr || list->Size() == 0 ? nullptr : (*list)[1];
}

// Says that the loop is parked, unless it was told to stop meanwhile.
bool TellParked() {
  int running = TAFileBuffer::ASyncLoadRunning;
  while (running != 0 && !TAFileBuffer::ASyncLoadRunning.compare_exchange_weak(running, -1)) {
  }
  return running != 0;
}

// The buffer to load next; parks first if there is none, and gives null if there is none after that
// either.
TAFileBuffer* WaitForFirst() {
  TAFileBuffer::ASyncLock.GetLock();
  if (FirstOfList() == nullptr && TellParked()) {
    TAFileBuffer::ASyncPause.GetLock();
    TAFileBuffer::ASyncLock.ReleaseLock();
    TAFileBuffer::ASyncPause.GetLock();
    TAFileBuffer::ASyncPause.ReleaseLock();
    TAFileBuffer::ASyncLock.GetLock();
  }
  TAFileBuffer* const first = FirstOfList();
  TAFileBuffer::ASyncLock.ReleaseLock();
  return first;
}

void WaitWhileOverloaded() {
  TAFileBuffer::ASyncLock.GetLock();
  while (TAFileBuffer::ASyncBufferSize > kOverload) {
    TAFileBuffer::ASyncOverloadFlag = 1;
    TAFileBuffer::ASyncLock.ReleaseLock();
    TAFileBuffer::ASyncOverloadLock.GetLock();  // it is up to the tool to release it
    TAFileBuffer::ASyncLock.GetLock();
  }
  TAFileBuffer::ASyncLock.ReleaseLock();
}

}  // namespace

std::atomic<int> TAFileBuffer::ASyncBufferSize{0};
std::atomic<int> TAFileBuffer::ASyncOverloadFlag{0};
std::atomic<int> TAFileBuffer::ASyncLoadRunning{0};
TAThreadLock& TAFileBuffer::ASyncLock = *new LoopLock;
TAThreadLock& TAFileBuffer::ASyncPause = *new SleepingLock;
TAThreadLock& TAFileBuffer::ASyncOverloadLock = *new SleepingLock;
VorListPtrTAFileBuffer* TAFileBuffer::ASyncLoadList = nullptr;
int TAFileBuffer::ASyncFirstFile = 1;

TAFileBuffer::TAFileBuffer(const char* name, int)
    : _name(name == nullptr ? nullptr : strdup(name)) {}

TAFileBuffer::~TAFileBuffer() {
  free(_text);
  free(_name);
}

int TAFileBuffer::LoadFile() noexcept {
  if (_isLoaded.exchange(true)) return 0;
  if (_name == nullptr) return 1;
  vor::WholeFile file = vor::ReadWholeFile(_name);
  if (file.text == nullptr) return 1;
  _text = file.text.release();
  _size = file.size;
  ASyncBufferSize += file.size;
  return 0;
}

char* TAFileBuffer::GetBuffer() {
  LoadFile();
  return _text;
}

int TAFileBuffer::GetSize() {
  LoadFile();
  return _size;
}

int TAFileBuffer::SaveAs(TAFileName& name) {
  const vor::FileDescriptor file = vor::OpenFile(name, O_WRONLY | O_CREAT);
  if (!file.IsOpen()) return 1;
  // Emptied after the text is loaded, which may come from this very file.
  const auto size = static_cast<std::size_t>(GetSize());
  [[maybe_unused]] const int emptied = ftruncate(file.Get(), 0);  // devices need not be
  if (size > 0) vor::WriteAll(file.Get(), GetBuffer(), size);
  return 0;
}

void TAFileBuffer::ASyncLoad(int, const char**) {
  loopProcess = getpid();
  while (ASyncLoadRunning != 0) {
    TAFileBuffer* const buffer = WaitForFirst();
    if (buffer == nullptr) continue;
    buffer->LoadFile();
    WaitWhileOverloaded();
  }
}

void TAFileBuffer::ASyncCleanup() {
  const vor::LockHolder holder(ASyncLock);
  if (ASyncLoadRunning != -1) return;
  ASyncLoadRunning = 0;
  ASyncPause.ReleaseLock();
}
