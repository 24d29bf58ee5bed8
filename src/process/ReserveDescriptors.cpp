#include "process/ReserveDescriptors.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>

#include "base/ForkSafeLock.h"
#include "base/PosixFile.h"

namespace vor {
namespace {

constinit ForkSafeMutex mutex(ForkStage::kService);
const ForkRegistration registration(mutex);

// The two ends of one pipe.  A tool may close all its descriptors, as daemons do, and get their
// numbers for files of its own; the pipe's identity distinguishes these from the reserve.
struct Reserve {
  int ends[2] = {-1, -1};
  dev_t device = 0;
  ino_t inode = 0;
};
constinit Reserve reserve;  // under mutex

bool IsReserve(int fd) {
  struct stat info;
  return fd >= 0 && fstat(fd, &info) == 0 && info.st_dev == reserve.device &&
         info.st_ino == reserve.inode;
}

void Release() {
  for (int& end : reserve.ends) {
    if (IsReserve(end)) close(end);
    end = -1;
  }
}

void Take() {
  if (IsReserve(reserve.ends[0]) && IsReserve(reserve.ends[1])) return;
  Release();
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  FileDescriptor first(AboveStandard(ends[0])), second(AboveStandard(ends[1]));
  struct stat info;
  if (!first.IsOpen() || !second.IsOpen() || fstat(first.Get(), &info) != 0) return;
  reserve = {{first.Release(), second.Release()}, info.st_dev, info.st_ino};
}

}  // namespace

void KeepDescriptorsInReserve() {
  const std::lock_guard guard(mutex);
  Take();
}

ReserveReleased::ReserveReleased() {
  mutex.lock();
  Release();
}

ReserveReleased::~ReserveReleased() {
  Take();
  mutex.unlock();
}

}  // namespace vor
