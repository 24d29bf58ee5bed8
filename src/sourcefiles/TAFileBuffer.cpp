#include "sourcefiles/TAFileBuffer.h"

#include <fcntl.h>
#include <pthread.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

#include "base/ForkSafeLock.h"
#include "base/NeverDestroyed.h"
#include "base/PosixFile.h"
#include "base/ScopedLock.h"
#include "filenames/TAFileName.h"
#include "sourcefiles/Gate.h"
#include "sourcefiles/WholeFile.h"
#include "thread/IrixLockDriver.h"
#include "thread/TAThreadLock.h"

// A text is read in chunks.  Other threads look at it meanwhile without a lock, so it only grows:
//
// - A block that was published stays where it is until the buffer is destroyed.  A regular file
//   has a known size, so it needs one block.  A text that outgrows its block is copied into one at
//   least twice as large.
// - The size is stored after the text that it counts.  A thread that reads the size first and then
//   the text gets a block with at least that many bytes.
// - The first byte of a chunk takes the place of the NUL of the text before it.  It is written
//   last, after the rest of the chunk and its NUL, so that a reader that searches for the NUL also
//   sees whole chunks.
//
// The state of a buffer is one number, for which SaveAs waits.
//
// The counters of the loop are plain ints in the interface.  This source touches them through
// std::atomic_ref only, because LoadFile counts without the lock.

namespace {

constexpr std::size_t kFirstChunk = 10240;  // bytes
constexpr int kOverload = 0x9C4000;         // bytes

// States of a buffer; any other is the number of the process that reads the file.
constexpr pid_t kUnread = 0;
constexpr pid_t kRead = -1;  // to its end, or it could not be opened
constexpr pid_t kCut = -2;   // the reading failed

// The lock of the loop.  It exists in every process, with a loop or without, so the arena is made
// when it is first taken.
class LoopLock final : public TAThreadLock, public vor::ForkSafeLock {
 public:
  constexpr LoopLock() : TAThreadLock(WithoutArena()), ForkSafeLock(vor::ForkStage::kTool) {}

  int GetLock() override {
    irixLockDriver.ActivateDriver();
    TAThreadLock::GetLock();
    _holder = pthread_self();
    return 1;
  }
  int ReleaseLock() override {
    _holder = pthread_t{};
    return TAThreadLock::ReleaseLock();
  }

 private:
  // A tool may fork while it holds the lock: then the child holds it as well.
  void BeforeFork() override {
    const bool isHeld = _holder == pthread_self();
    if (!isHeld) TAThreadLock::GetLock();
    _isHeldByForker = isHeld;
  }
  void AfterFork() override {
    if (!_isHeldByForker) TAThreadLock::ReleaseLock();
  }

  std::atomic<pthread_t> _holder{};  // 0 for none
  bool _isHeldByForker = false;      // under the lock
};

// A lock whose waiters sleep, since the loop may wait for hours.  It needs no arena.
class SleepingLock final : public TAThreadLock {
 public:
  constexpr SleepingLock() : TAThreadLock(WithoutArena()) {}

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

constinit vor::NeverDestroyed<LoopLock> loopLock;
constinit vor::NeverDestroyed<SleepingLock> pauseLock;
constinit vor::NeverDestroyed<SleepingLock> overloadLock;
const vor::ForkRegistration loopLockRegistration(loopLock.object);

// The process that runs the loop.
std::atomic<pid_t> loopProcess{0};

struct ExitNotice {
  // A child made by fork has no loop to end.
  ~ExitNotice() {
    if (loopProcess != getpid()) return;
    ForgetList();
    TAFileBuffer::ASyncCleanup();
  }

  // A loop that wakes up now must not use the list: the tool's static objects are destroyed.
  static void ForgetList() {
    const vor::ScopedLock holder(TAFileBuffer::ASyncLock);
    TAFileBuffer::ASyncLoadList = nullptr;
  }
} exitNotice;

std::atomic_ref<int> Running() {
  return std::atomic_ref(TAFileBuffer::ASyncLoadRunning);
}

std::atomic_ref<int> BytesRead() {
  return std::atomic_ref(TAFileBuffer::ASyncBufferSize);
}

// With the lock held.
TAFileBuffer* FirstOfList() {
  const VorListPtrTAFileBuffer* const list = TAFileBuffer::ASyncLoadList;
  return list == nullptr || list->Size() == 0 ? nullptr : (*list)[1];
}

// Announces that the loop is parked.  False if it is to stop.
bool AnnounceParked() {
  int running = Running();
  while (running != 0 && !Running().compare_exchange_weak(running, -1)) {
  }
  return running != 0;
}

// The buffer to load next.  If there is none, parks until it is woken and looks once more; null if
// there is still none.
TAFileBuffer* WaitForFirst() {
  TAFileBuffer::ASyncLock.GetLock();
  if (FirstOfList() == nullptr && AnnounceParked()) {
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
  while (BytesRead() > kOverload) {
    std::atomic_ref(TAFileBuffer::ASyncOverloadFlag).store(1);
    TAFileBuffer::ASyncLock.ReleaseLock();
    TAFileBuffer::ASyncOverloadLock.GetLock();  // the tool releases it
    TAFileBuffer::ASyncLock.GetLock();
  }
  TAFileBuffer::ASyncLock.ReleaseLock();
}

// Reads up to `size` bytes to the end of a text, fewer only at the end of the file, and puts a NUL
// after them.  The NUL of the text is replaced last.  Returns the bytes read; -1 on an error.
ssize_t ReadChunk(int fd, char* end, std::size_t size) {
  char first = '\0';
  ssize_t count = vor::ReadSome(fd, &first, 1);
  if (count <= 0) return count;
  std::size_t filled = 1;
  for (; filled < size; filled += static_cast<std::size_t>(count)) {
    count = vor::ReadSome(fd, end + filled, size - filled);
    if (count < 0) return -1;
    if (count == 0) break;
  }
  end[filled] = '\0';
  std::atomic_ref(*end).store(first, std::memory_order_release);
  return static_cast<ssize_t>(filled);
}

}  // namespace

int TAFileBuffer::ASyncBufferSize = 0;
int TAFileBuffer::ASyncOverloadFlag = 0;
int TAFileBuffer::ASyncLoadRunning = 0;
TAThreadLock& TAFileBuffer::ASyncLock = loopLock.object;
TAThreadLock& TAFileBuffer::ASyncPause = pauseLock.object;
TAThreadLock& TAFileBuffer::ASyncOverloadLock = overloadLock.object;
VorListPtrTAFileBuffer* TAFileBuffer::ASyncLoadList = nullptr;
int TAFileBuffer::ASyncFirstFile = 1;

TAFileBuffer::TAFileBuffer(const char* name, int) {
  if (name != nullptr) _name.emplace(name);
}

TAFileBuffer::~TAFileBuffer() = default;

int TAFileBuffer::LoadFile() noexcept {
  pid_t state = kUnread;
  if (!_state.compare_exchange_strong(state, getpid())) return 0;
  const vor::FileDescriptor file =
      _name ? vor::OpenFile(_name->c_str(), O_RDONLY) : vor::FileDescriptor();
  const bool isRead = file.IsOpen() && _read(file);
  _state = isRead || !file.IsOpen() ? kRead : kCut;
  _state.notify_all();
  return isRead ? 0 : 1;
}

// False if the reading fails.
bool TAFileBuffer::_read(const vor::FileDescriptor& file) {
  const std::size_t known = vor::KnownSize(file);
  if (known > vor::kLongestText) return false;
  // One byte more: the read that finds the end of the file needs room.
  const std::size_t expected = known > 0 ? known + 1 : 0;
  std::size_t size = 0, room = 0, chunk = kFirstChunk;
  for (;;) {
    const std::size_t wanted = size < expected ? std::min(chunk, expected - size) : chunk;
    if (room - size < wanted) {
      room = std::max({expected, 2 * room, size + wanted});
      if (!_growTo(room + 1, size)) return false;
    }
    char* const end = _blocks.back().get() + size;
    const ssize_t count = ReadChunk(file.Get(), end, wanted);
    if (count < 0) return false;
    size += static_cast<std::size_t>(count);
    if (size > vor::kLongestText) return false;
    _text = _blocks.back().get();
    _size = static_cast<int>(size);
    BytesRead() += static_cast<int>(count);
    if (static_cast<std::size_t>(count) < wanted) return true;
    if (size > 10 * chunk) chunk = size / 2;
  }
}

// Begins a block of `bytes` bytes with the `size` bytes that were read and a NUL.
bool TAFileBuffer::_growTo(std::size_t bytes, std::size_t size) {
  std::unique_ptr<char[]> block(new (std::nothrow) char[bytes]);
  if (block == nullptr) return false;
  if (size > 0) memcpy(block.get(), _blocks.back().get(), size);
  block[size] = '\0';
  _blocks.push_back(std::move(block));
  return true;
}

// Waits until no other thread reads the file.  False if it was not read to its end, and in a child
// made by fork while its parent was reading it.
bool TAFileBuffer::_waitUntilRead() const {
  for (pid_t state = _state; state > 0; state = _state) {
    if (state != getpid()) return false;
    _state.wait(state);
  }
  return _state == kRead;
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
  LoadFile();
  if (!_waitUntilRead()) return 1;
  // Emptied after the text is loaded, which may come from this very file.
  [[maybe_unused]] const int emptied = ftruncate(file.Get(), 0);  // a device cannot be
  if (_size > 0) vor::WriteAll(file.Get(), _text, static_cast<std::size_t>(_size.load()));
  return 0;
}

void TAFileBuffer::ASyncLoad(int, const char**) {
  loopProcess = getpid();
  while (Running() != 0) {
    TAFileBuffer* const buffer = WaitForFirst();
    if (buffer == nullptr) continue;
    buffer->LoadFile();
    WaitWhileOverloaded();
  }
}

void TAFileBuffer::ASyncCleanup() {
  const vor::ScopedLock holder(ASyncLock);
  if (Running() != -1) return;
  Running() = 0;
  ASyncPause.ReleaseLock();
}
