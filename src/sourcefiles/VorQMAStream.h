#ifndef VOR_SOURCEFILES_VORQMASTREAM_H
#define VOR_SOURCEFILES_VORQMASTREAM_H

#include <cstddef>
#include <vector>

#include "base/PosixFile.h"

namespace vor {

/// The lines of a text file, one after the other.  The buffer grows with the longest line, not
/// with the file.
class VorQMAStream {
 public:
  /// A file that cannot be opened or read, a null \a path included, has no lines.
  explicit VorQMAStream(const char* path);

  /// The next line without its newline, to be changed at will, valid until the next call; null at
  /// the end.  What stands behind the last newline is no line, and callers rely on it.
  char* NextLine();

 private:
  bool Refill();

  FileDescriptor _file;
  std::vector<char> _buffer;
  std::size_t _start = 0;    // of what was not handed out yet
  std::size_t _scanned = 0;  // what stands before holds no newline from _start on
  std::size_t _end = 0;      // of what was read
};

}  // namespace vor

#endif  // VOR_SOURCEFILES_VORQMASTREAM_H
