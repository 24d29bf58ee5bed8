#ifndef VOR_SOURCEFILES_VORQMASTREAM_H
#define VOR_SOURCEFILES_VORQMASTREAM_H

#include <cstddef>
#include <vector>

#include "base/PosixFile.h"

namespace vor {

/// Reads a text file line by line.  The buffer grows with the longest line, not with the file.
class VorQMAStream {
 public:
  /// A file that cannot be opened or read, a null \a path included, has no lines.
  explicit VorQMAStream(const char* path);

  /// The next line without its newline; null at the end of file.  The caller may change it; it is
  /// valid until the next call.  Text after the last newline is not a line, and callers rely on
  /// that.
  char* NextLine();

 private:
  bool Refill();

  FileDescriptor _file;
  std::vector<char> _buffer;
  std::size_t _start = 0;    // of the text that was not returned yet
  std::size_t _scanned = 0;  // no newline from _start to here
  std::size_t _end = 0;      // of the text that was read
};

}  // namespace vor

#endif  // VOR_SOURCEFILES_VORQMASTREAM_H
