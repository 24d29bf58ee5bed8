#include "InputFile.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace campaign {

std::string OpenInput(const std::string& path, std::ifstream* file) {
  std::error_code ignored;
  const bool isDirectory = std::filesystem::is_directory(path, ignored);
  if (!isDirectory) file->open(path);
  if (file->is_open()) return "";
  return "cannot read " + path + ": " + strerror(isDirectory ? EISDIR : errno);
}

RegularFile::RegularFile(const std::string& path)
    : _fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
  struct stat status = {};
  if (_fd < 0) return;
  if (fstat(_fd, &status) == 0 && S_ISREG(status.st_mode)) {
    _size = status.st_size;
    return;
  }
  close(_fd);
  _fd = -1;
}

RegularFile::~RegularFile() {
  if (_fd >= 0) close(_fd);
}

std::string RegularFile::Read(long long offset, std::size_t size) const {
  std::string bytes(size, '\0');
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = pread(_fd, bytes.data() + done, size - done,
                                static_cast<off_t>(offset) + static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return bytes;
}

}  // namespace campaign
