#include "thread/IrixLockDriver.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PosixFile.h"

// The name of the arena file is predictable, and every user may write to its directory.  An
// existing file, link or pipe of that name may thus belong to any user.  It is used only if a
// process of this user certainly left it: a regular file, not a link, of this user, with no second
// name, and in use by no process.
//
// Such a file is left by a process that was killed.  Its name holds the number of that process,
// which is now the number of this one; so its maker is gone, unless it lives in another PID
// namespace and shares /tmp.  To recognise that one, the maker locks the file.  The mapping keeps
// the lock after the descriptor is closed, also in the maker's forked children.

namespace {

constexpr std::size_t kArenaSize = 4096;

// Locks the file.  Returns false if it is in use or not certainly this user's alone.
bool Claim(const vor::FileDescriptor& file) {
  // If the file system has no locks, the number of the process decides alone.
  if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  struct stat info;
  if (fstat(file.Get(), &info) != 0) return false;
  return S_ISREG(info.st_mode) && info.st_uid == geteuid() && info.st_nlink == 1;
}

}  // namespace

// Ready before any constructor runs, since the static objects of a tool may be locks.
constinit IrixLockDriver irixLockDriver;

const int IrixLockDriver::_forkHandler = pthread_atfork(nullptr, nullptr, InForkedChild);

IrixLockDriver::~IrixLockDriver() {
  _isActive.store(true);  // a lock constructed later would create a file that is never removed
  if (_maker.load(std::memory_order_acquire) != getpid()) return;
  unlink(_arenaPath);
  munmap(_arena, kArenaSize);
}

void IrixLockDriver::ActivateDriver() {
  if (_isActive.load(std::memory_order_relaxed) || _isActive.exchange(true)) return;
  snprintf(_arenaPath, sizeof _arenaPath, "/tmp/TABaseArena_%d", getpid());
  _arena = Attach();
  if (_arena != nullptr) _maker.store(getpid(), std::memory_order_release);
}

void IrixLockDriver::InForkedChild() {
  irixLockDriver._isActive.store(true);
  irixLockDriver._maker.store(0);
}

// Makes the file, or takes over one that was left, and maps it; null if that fails.
void* IrixLockDriver::Attach() {
  vor::FileDescriptor file =
      vor::OpenFile(_arenaPath, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (!file.IsOpen()) file = vor::OpenFile(_arenaPath, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
  if (!file.IsOpen() || !Claim(file)) return nullptr;
  void* arena = MAP_FAILED;
  if (ftruncate(file.Get(), kArenaSize) == 0) {
    arena = mmap(nullptr, kArenaSize, PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
  }
  if (arena != MAP_FAILED) return arena;
  unlink(_arenaPath);
  return nullptr;
}
