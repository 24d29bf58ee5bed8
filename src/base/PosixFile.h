#ifndef VOR_BASE_POSIXFILE_H
#define VOR_BASE_POSIXFILE_H

#include <sys/types.h>

#include <cstddef>
#include <limits>
#include <string>

namespace vor {

/// Owns an open descriptor and closes it.
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

  /// Passes the descriptor to the caller, who closes it.
  int Release();
  /// Closes the descriptor and owns \a fd instead; -1 for none.  Keeps errno.
  void Reset(int fd);

 private:
  int _fd = -1;
};

/// Moves a new descriptor away from 0, 1 and 2.  A process that is started with these three closed
/// gets their numbers for the next files or connections that it opens, and everything that it
/// prints would go there.
///
/// Returns \a fd if it is above 2; otherwise closes \a fd and returns a close-on-exec duplicate
/// above 2, or -1 with errno set if no descriptor is free.  Returns a negative \a fd as it is.
int AboveStandard(int fd);

/// Occupies those of the descriptors 0, 1 and 2 that are closed, for as long as the object lives.
/// For code that opens files itself (a stream, opendir) and so cannot use AboveStandard.
class StandardDescriptorsHeld {
 public:
  StandardDescriptorsHeld();
  StandardDescriptorsHeld(const StandardDescriptorsHeld&) = delete;
  StandardDescriptorsHeld& operator=(const StandardDescriptorsHeld&) = delete;

 private:
  FileDescriptor _held[3];
};

/// open() with close-on-exec, repeated if a signal interrupts it.  The descriptor is above 2.
/// After an error it is not open, and errno is set.
FileDescriptor OpenFile(const char* path, int flags, mode_t mode = 0666);

/// read(), repeated if a signal interrupts it.  Returns the number of bytes, 0 at the end of file,
/// -1 with errno set after an error.
ssize_t ReadSome(int fd, void* buffer, std::size_t size);

/// Writes all bytes.  Returns false with errno set after an error.
bool WriteAll(int fd, const void* data, std::size_t size);

/// Appends the rest of a file to \a out.  A regular file is read at once, according to its size;
/// files without a known size (/proc, pipes) are read in growing pieces.
///
/// Returns false with errno set after an error; \a out then includes the bytes read before it.
/// ENOMEM: memory cannot hold the file.  EFBIG: \a out would be longer than \a limit bytes.
bool ReadToEnd(int fd, std::string& out,
               std::size_t limit = std::numeric_limits<std::size_t>::max());

}  // namespace vor

#endif  // VOR_BASE_POSIXFILE_H
