#include "base/VorFCopy.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "base/PosixFile.h"
#include "base/VorUnicodeString.h"

namespace {

constexpr std::size_t kPiece = 1 << 18;

bool CopyByReading(int source, int target) {
  const std::unique_ptr<char[]> buffer(new (std::nothrow) char[kPiece]);
  if (buffer == nullptr) {
    errno = ENOMEM;
    return false;
  }
  for (;;) {
    const ssize_t count = vor::ReadSome(source, buffer.get(), kPiece);
    if (count <= 0) return count == 0;
    if (!vor::WriteAll(target, buffer.get(), static_cast<std::size_t>(count))) return false;
  }
}

// Lets the kernel copy up to size bytes.  If it cannot copy between these two files, the rest of
// the source is read and written.
bool CopyRun(int source, int target, off_t size) {
  while (size > 0) {
    const std::size_t piece = static_cast<std::size_t>(std::min<off_t>(size, 1 << 30));
    const ssize_t count = copy_file_range(source, nullptr, target, nullptr, piece, 0);
    if (count == 0) return true;  // the file has become shorter
    if (count < 0 && errno != EINTR) return CopyByReading(source, target);
    if (count > 0) size -= count;
  }
  return true;
}

// Copies the runs of data of a file and skips its holes.
bool CopyAroundHoles(int source, int target, off_t size) {
  off_t data = lseek(source, 0, SEEK_DATA);
  while (data >= 0 && data < size) {
    const off_t hole = lseek(source, data, SEEK_HOLE);
    if (hole < 0 || lseek(source, data, SEEK_SET) < 0 || lseek(target, data, SEEK_SET) < 0 ||
        !CopyRun(source, target, hole - data)) {
      return false;
    }
    data = lseek(source, hole, SEEK_DATA);
  }
  // ENXIO: there is no data after the last position, the rest is a hole.
  return (data >= 0 || errno == ENXIO) && ftruncate(target, size) == 0;
}

bool CopyContent(int source, int target, const struct stat& info) {
  // Files without a known size, as in /proc, report 0.
  if (info.st_size == 0) return CopyByReading(source, target);
  const bool hasHoles = info.st_blocks < info.st_size / 512;
  return hasHoles ? CopyAroundHoles(source, target, info.st_size)
                  : CopyRun(source, target, info.st_size);
}

bool IsSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

// Do not wait for the other end of a FIFO, and do not acquire a controlling terminal.
constexpr int kOnlyFiles = O_NONBLOCK | O_NOCTTY;

// Opens a regular file.  For anything else the descriptor is not open and errno is set.
vor::FileDescriptor OpenRegularFile(const char* path, int flags, struct stat* info) {
  vor::FileDescriptor file = vor::OpenFile(path, flags | kOnlyFiles, 0600);
  if (file.IsOpen() && fstat(file.Get(), info) != 0) file.Reset(-1);
  if (file.IsOpen() && !S_ISREG(info->st_mode)) {
    file.Reset(-1);
    errno = EINVAL;
  }
  return file;
}

// Fills the open target.  The permission bits are set first, so that the bits of an older target
// never expose a private file.  Only the owner of an existing target can set them.
bool Fill(int source, vor::FileDescriptor target, bool made, const struct stat& info) {
  const bool hasMode = fchmod(target.Get(), info.st_mode & 0777) == 0;
  if (!hasMode && (made || errno != EPERM)) return false;
  return ftruncate(target.Get(), 0) == 0 && CopyContent(source, target.Get(), info) &&
         close(target.Release()) == 0;
}

}  // namespace

int VorFCopy(const VorUnicodeString& source, const VorUnicodeString& target, int replace) {
  struct stat fromInfo;
  const vor::FileDescriptor from = OpenRegularFile(source, O_RDONLY, &fromInfo);
  if (!from.IsOpen()) return -1;

  // An exclusive open comes first: if it succeeds, this call may remove the target later.  No
  // O_TRUNC: the target may be the source itself.
  struct stat toInfo;
  vor::FileDescriptor to = OpenRegularFile(target, O_WRONLY | O_CREAT | O_EXCL, &toInfo);
  const bool made = to.IsOpen();
  if (!made && errno == EEXIST && replace != 0) {
    to = OpenRegularFile(target, O_WRONLY | O_CREAT, &toInfo);
  }
  if (!to.IsOpen()) return -1;
  if (IsSameFile(fromInfo, toInfo)) {
    errno = EINVAL;
    return -1;
  }
  if (Fill(from.Get(), std::move(to), made, fromInfo)) return 0;
  if (made) {
    const int keptErrno = errno;
    unlink(target);
    errno = keptErrno;
  }
  return -1;
}
