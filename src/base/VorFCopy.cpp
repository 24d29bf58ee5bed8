#include "base/VorFCopy.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "base/PosixFile.h"
#include "base/VorUnicodeString.h"

namespace {

constexpr std::size_t kPiece = 1 << 18;

bool CopyByReading(int source, int target) {
  const auto buffer = std::make_unique<char[]>(kPiece);
  for (;;) {
    const ssize_t count = vor::ReadSome(source, buffer.get(), kPiece);
    if (count <= 0) return count == 0;
    if (!vor::WriteAll(target, buffer.get(), static_cast<std::size_t>(count))) return false;
  }
}

// Lets the kernel copy; what it does not offer between these two files is read and written.
bool CopyContent(int source, int target) {
  bool copiedAny = false;
  for (;;) {
    const ssize_t count = copy_file_range(source, nullptr, target, nullptr, 1 << 30, 0);
    if (count > 0) {
      copiedAny = true;
    } else if (count == 0 && copiedAny) {
      return true;
    } else if (count < 0 && errno == EINTR) {
      continue;
    } else {
      // Nothing copied may also mean a file that does not tell its size, as in /proc.
      return CopyByReading(source, target);
    }
  }
}

bool IsSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

bool Fill(int source, int target, const struct stat& info) {
  return ftruncate(target, 0) == 0 && CopyContent(source, target) &&
         fchmod(target, info.st_mode & 07777) == 0;
}

}  // namespace

int VorFCopy(const VorUnicodeString& source, const VorUnicodeString& target, int replace) {
  const vor::FileDescriptor from = vor::OpenFile(source, O_RDONLY);
  struct stat fromInfo;
  if (!from.IsOpen() || fstat(from.Get(), &fromInfo) != 0) return -1;
  if (!S_ISREG(fromInfo.st_mode)) {
    errno = EINVAL;
    return -1;
  }

  // Made exclusively first: it tells whether the target is ours to remove.  Not truncated while
  // opening: it may be the source itself.
  vor::FileDescriptor to = vor::OpenFile(target, O_WRONLY | O_CREAT | O_EXCL, 0600);
  const bool made = to.IsOpen();
  if (!made && errno == EEXIST && replace != 0) to = vor::OpenFile(target, O_WRONLY | O_CREAT);
  struct stat toInfo;
  if (!to.IsOpen() || fstat(to.Get(), &toInfo) != 0) return -1;
  if (IsSameFile(fromInfo, toInfo)) {
    errno = EINVAL;
    return -1;
  }
  if (Fill(from.Get(), to.Get(), fromInfo)) return 0;
  if (made) {
    const int keptErrno = errno;
    unlink(target);
    errno = keptErrno;
  }
  return -1;
}
