#ifndef VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H
#define VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H

#include <fstream>
#include <string>

namespace campaign {

/// Opens a file to read it.  Returns "" or one line that says why it cannot be read.  A directory
/// is refused; a stream would read it as an empty file.
std::string OpenInput(const std::string& path, std::ifstream* file);

/// A regular file that is open for reading.  Anything else of that name, such as a pipe that a test
/// left in place of its log, is not opened and cannot block.
class RegularFile {
 public:
  explicit RegularFile(const std::string& path);
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;
  ~RegularFile();

  bool IsOpen() const { return _fd >= 0; }
  /// Its size in bytes when it was opened; 0 if it is not open.
  long long Size() const { return _size; }
  /// Reads up to \a size bytes from \a offset on.  Returns fewer at the end or after an error.
  std::string Read(long long offset, std::size_t size) const;

 private:
  int _fd;
  long long _size = 0;
};

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H
