#include "thread/TAMutex.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "base/PosixFile.h"

// The mutex in its file
//
// The file is made under a temporary name, filled with an unlocked mutex and then linked to its
// final name.  So no process sees a half-written mutex, and of several first users one wins: link
// fails if the name exists.
//
// Recovery of a mutex whose owner died
//
// The mutex is robust.  When a thread ends, the system walks the list of the robust mutexes that it
// holds, which the C library keeps for each thread in user memory, and marks each as "owner died".
// The next thread that locks a marked mutex gets EOWNERDEAD and makes it consistent.  Two cases
// need more:
//
// - The list runs through the memory of the mutexes.  If an object is destroyed while it is locked,
//   its mapping must stay, or the system would lose the mutexes that come after it in the list.
// - If the machine goes down, nothing is marked, but the file may stay.  Its lock word then names a
//   thread that is not there.  The C library ends a process that meets such an owner in a mutex
//   with priority inheritance.  So Lock looks for the owner first and sets the mark in its place.
//   If another thread has the number by then, the mutex counts as locked until that thread ends.

namespace {

constexpr std::size_t kFileSize = 64;
static_assert(sizeof(pthread_mutex_t) <= kFileSize);

// Unmaps a mutex, unless it is null.
void Unmap(void* mutex) {
  if (mutex != nullptr) munmap(mutex, sizeof(pthread_mutex_t));
}

// Maps the mutex of a file.  Returns null, with the reason in errno, if that fails or if the file
// is so short that an access to the mapping would be fatal.
void* Map(const vor::FileDescriptor& file) {
  struct stat info;
  if (!file.IsOpen() || fstat(file.Get(), &info) != 0) return nullptr;
  if (!S_ISREG(info.st_mode) || info.st_size < static_cast<off_t>(kFileSize)) {
    errno = EINVAL;
    return nullptr;
  }
  void* const mapped =
      mmap(nullptr, sizeof(pthread_mutex_t), PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
  return mapped == MAP_FAILED ? nullptr : mapped;
}

bool Initialise(void* memory) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  const int error = pthread_mutex_init(static_cast<pthread_mutex_t*>(memory), &attributes);
  pthread_mutexattr_destroy(&attributes);
  errno = error;
  return error == 0;
}

// Fills a new file with an unlocked mutex.
bool WriteMutex(const vor::FileDescriptor& file) {
  const char zeros[kFileSize] = {};
  if (!file.IsOpen() || !vor::WriteAll(file.Get(), zeros, sizeof zeros)) return false;
  if (fchmod(file.Get(), 0777) != 0) return false;
  void* const memory = Map(file);
  if (memory == nullptr) return false;
  const bool isMade = Initialise(memory);
  Unmap(memory);
  return isMade;
}

// Marks the mutex as the system does, if its owner is gone.
void MarkDeadOwner(pthread_mutex_t& mutex) {
  const std::atomic_ref word(mutex.__data.__lock);
  int seen = word.load(std::memory_order_relaxed);
  const pid_t owner = seen & FUTEX_TID_MASK;
  if (owner == 0 || kill(owner, 0) == 0 || errno != ESRCH) return;
  const unsigned waiters = static_cast<unsigned>(seen) & FUTEX_WAITERS;
  word.compare_exchange_strong(seen, static_cast<int>(waiters | FUTEX_OWNER_DIED));
}

// The pattern of a name in the same directory.  It does not contain the final name, which may be
// as long as names can be.
std::string TemporaryName(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1) + ".TAMutex" + std::to_string(getpid()) + ".XXXXXX";
}

}  // namespace

TAMutex::TAMutex(const VorString& name) : _path(TAFileName("/tmp") + ("TAMutex" + name)) {
  CreateSharedMemory();
  Open();
}

// A mutex that is held stays mapped, for the list of its owner's robust mutexes.
TAMutex::~TAMutex() {
  if (!_isHeld) Unmap(_mutex);
}

int TAMutex::CreateSharedMemory() {
  if (_path.IsFile() != 0) return 1;
  std::string temporary = TemporaryName(static_cast<const char*>(_path));
  const vor::FileDescriptor file(vor::AboveStandard(mkostemp(temporary.data(), O_CLOEXEC)));
  bool isMade = WriteMutex(file);
  // Unlike rename, link does not replace what another process has put there meanwhile.
  if (isMade && link(temporary.c_str(), _path) != 0) {
    isMade = errno == EEXIST && _path.IsFile() != 0;
  }
  if (!isMade) perror("TAMutex shared memory creation : mmap failed");
  if (file.IsOpen()) unlink(temporary.c_str());
  return isMade ? 1 : -1;
}

void TAMutex::Open() {
  _mutex = Map(vor::OpenFile(_path, O_RDWR | O_NOFOLLOW));
  if (_mutex != nullptr) return;
  perror("TAMutex::TAMutex()@mmap");
  printf("TAMutex init failed : mmap error\n");
}

int TAMutex::Lock() {
  if (_mutex == nullptr) {
    printf("mutex not initialized.\n");
    return -1;
  }
  auto* const mutex = static_cast<pthread_mutex_t*>(_mutex);
  MarkDeadOwner(*mutex);
  int result = pthread_mutex_lock(mutex);
  if (result == EOWNERDEAD) result = pthread_mutex_consistent(mutex);
  if (result == 0) _isHeld = true;
  return result;
}

int TAMutex::Unlock() {
  if (_mutex == nullptr) {
    printf("mutex not initialized.\n");
    return -1;
  }
  // Cleared before the unlock: afterwards the flag may be that of the next owner.
  const bool wasHeld = _isHeld.exchange(false);
  const int result = pthread_mutex_unlock(static_cast<pthread_mutex_t*>(_mutex));
  if (result != 0 && wasHeld) _isHeld = true;
  return result;
}
