#ifndef VOR_BASE_POSIXFILE_H
#define VOR_BASE_POSIXFILE_H

#include <sys/types.h>

#include <cstddef>
#include <limits>
#include <string>

namespace vor {

/// An open descriptor that is closed when its owner goes away.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : _fd(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : _fd(other.Release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { Reset(-1); }

  bool IsOpen() const { return _fd >= 0; }
  int Get() const { return _fd; }

  /// Hands the descriptor on to the caller, who closes it.
  int Release();
  /// Closes what is held and takes \a fd over; -1 for none.  Keeps errno.
  void Reset(int fd);

 private:
  int _fd = -1;
};

/// open() with close-on-exec added, repeated when a signal interrupts it.
FileDescriptor OpenFile(const char* path, int flags, mode_t mode = 0666);

/// read() repeated when a signal interrupts it: the bytes read, 0 at the end, -1 on an error.
ssize_t ReadSome(int fd, void* buffer, std::size_t size);

/// Writes all bytes; false on an error, errno says which.
bool WriteAll(int fd, const void* data, std::size_t size);

/// Appends the rest of a file to \a out: by one sized read where the file tells its size, by
/// growing pieces where it does not (/proc, pipes).  False on an error, errno says which; \a out
/// then holds what was read before it.  A file that memory cannot hold is an error (ENOMEM), and so
/// is one that makes \a out longer than \a limit bytes (EFBIG).
bool ReadToEnd(int fd, std::string& out,
               std::size_t limit = std::numeric_limits<std::size_t>::max());

}  // namespace vor

#endif  // VOR_BASE_POSIXFILE_H
