#include "thread/IrixLockDriver.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/mman.h>
#include <unistd.h>

#include "base/PosixFile.h"

namespace {

constexpr std::size_t kArenaSize = 4096;

}  // namespace

// Ready before any constructor runs, since the static objects of a tool may be locks.
constinit IrixLockDriver irixLockDriver;

IrixLockDriver::~IrixLockDriver() {
  _isActive.store(true);  // a lock made later would leave a file that nobody removes
  if (_maker.load(std::memory_order_acquire) != getpid()) return;
  munmap(_arena, kArenaSize);
  unlink(_arenaPath);
}

void IrixLockDriver::ActivateDriver() {
  if (_isActive.load(std::memory_order_relaxed) || _isActive.exchange(true)) return;
  snprintf(_arenaPath, sizeof _arenaPath, "/tmp/TABaseArena_%d", getpid());
  _arena = Attach();
  if (_arena != nullptr) _maker.store(getpid(), std::memory_order_release);
}

// Makes the file and maps it; null if that fails.  The name is predictable: a file or a link that
// is there already belongs to somebody else and stays untouched.
void* IrixLockDriver::Attach() {
  const vor::FileDescriptor file =
      vor::OpenFile(_arenaPath, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (!file.IsOpen()) return nullptr;
  void* arena = MAP_FAILED;
  if (ftruncate(file.Get(), kArenaSize) == 0) {
    arena = mmap(nullptr, kArenaSize, PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
  }
  if (arena != MAP_FAILED) return arena;
  unlink(_arenaPath);
  return nullptr;
}
