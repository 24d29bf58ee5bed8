#ifndef VOR_FOUNDATION_LINEREADER_H
#define VOR_FOUNDATION_LINEREADER_H

#include <cstddef>
#include <memory>
#include <string_view>

#include "base/PosixFile.h"

namespace vor {

/// Reads the lines of a file by the rules of ReadFile, without their newlines.
///
/// It reads block by block, so its memory does not depend on the size of the file.
class LineReader {
 public:
  /// Opens \a path.
  explicit LineReader(const char* path);

  /// False if the file could not be opened or is a directory; it then has no lines.
  bool IsOpen() const { return _file.IsOpen(); }

  /// Stores the next line in *line, valid until the next call.  Returns false at the end of file
  /// and after a read error.
  bool Next(std::string_view* line);

 private:
  bool ReadMore();

  FileDescriptor _file;
  std::unique_ptr<char[]> _block;
  std::size_t _start = 0;  // of the next line in the block
  std::size_t _end = 0;    // of the bytes read
};

}  // namespace vor

#endif  // VOR_FOUNDATION_LINEREADER_H
