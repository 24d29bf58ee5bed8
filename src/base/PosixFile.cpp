#include "base/PosixFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace vor {
namespace {

constexpr std::size_t kFirstPiece = 4096;
constexpr std::size_t kLargestPiece = 1 << 20;

// The size of the first read.  For a regular file one byte more than what is left, so that the
// first read gets everything and the second one finds the end.
std::size_t FirstPiece(int fd) {
  struct stat info;
  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size <= 0) return kFirstPiece;
  const off_t position = lseek(fd, 0, SEEK_CUR);
  if (position < 0 || position >= info.st_size) return kFirstPiece;
  return static_cast<std::size_t>(info.st_size - position) + 1;
}

}  // namespace

int FileDescriptor::Release() {
  const int fd = _fd;
  _fd = -1;
  return fd;
}

void FileDescriptor::Reset(int fd) {
  if (_fd >= 0) {
    const int keptErrno = errno;
    close(_fd);  // never repeated: Linux frees the descriptor even if a signal interrupts
    errno = keptErrno;
  }
  _fd = fd;
}

int AboveStandard(int fd) {
  if (fd < 0 || fd > STDERR_FILENO) return fd;
  const FileDescriptor standard(fd);
  return fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

StandardDescriptorsHeld::StandardDescriptorsHeld() {
  for (FileDescriptor& held : _held) {
    FileDescriptor next(open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!next.IsOpen() || next.Get() > STDERR_FILENO) return;
    held = std::move(next);
  }
}

FileDescriptor OpenFile(const char* path, int flags, mode_t mode) {
  int fd;
  do {
    fd = open(path, flags | O_CLOEXEC, mode);
  } while (fd < 0 && errno == EINTR);
  return FileDescriptor(AboveStandard(fd));
}

ssize_t ReadSome(int fd, void* buffer, std::size_t size) {
  ssize_t count;
  do {
    count = read(fd, buffer, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

bool WriteAll(int fd, const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t count = write(fd, next, size);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) {
      next += count;
      size -= static_cast<std::size_t>(count);
    }
  }
  return true;
}

bool ReadToEnd(int fd, std::string& out, std::size_t limit) {
  std::size_t size = out.size();
  std::size_t piece = FirstPiece(fd);
  if (piece > kFirstPiece && size + (piece - 1) > limit) {
    errno = EFBIG;
    return false;
  }
  try {
    for (;;) {
      out.resize(size + piece);
      const ssize_t count = ReadSome(fd, out.data() + size, piece);
      if (count > 0) size += static_cast<std::size_t>(count);
      out.resize(size);
      if (count <= 0) return count == 0;
      if (size > limit) {
        errno = EFBIG;
        return false;
      }
      // Use the room that is already allocated before growing it.
      const std::size_t spare = out.capacity() - size;
      piece =
          spare > 0 ? std::min(spare, kLargestPiece) : std::clamp(size, kFirstPiece, kLargestPiece);
    }
  } catch (const std::exception&) {  // no memory, or longer than a string can be
    errno = ENOMEM;
    return false;
  }
}

}  // namespace vor
