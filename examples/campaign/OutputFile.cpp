#include "OutputFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace campaign {
namespace {

std::string Problem(const std::string& path, int error) {
  return "cannot write " + path + ": " + strerror(error);
}

/// A descriptor that is written and then closed.
class OutputDescriptor {
 public:
  explicit OutputDescriptor(int fd) : _fd(fd) {}
  OutputDescriptor(const OutputDescriptor&) = delete;
  OutputDescriptor& operator=(const OutputDescriptor&) = delete;
  ~OutputDescriptor() {
    if (_fd >= 0) close(_fd);
  }

  int Get() const { return _fd; }

  /// False if it failed; errno says why.
  bool Write(const std::string& text) const {
    for (std::size_t written = 0; written < text.size();) {
      const ssize_t count = write(_fd, text.data() + written, text.size() - written);
      if (count < 0 && errno != EINTR) return false;
      if (count > 0) written += static_cast<std::size_t>(count);
    }
    return true;
  }

  /// Also reports errors that a network file system reports only on closing.
  bool Close() {
    const int fd = _fd;
    _fd = -1;
    return close(fd) == 0;
  }

 private:
  int _fd;
};

/// The destination of the text of a file.
struct Target {
  std::string path;        // with symbolic links resolved
  bool isDirect = false;   // a device or a pipe, which must not be replaced
  mode_t permissions = 0;  // that the file is to get
  int error = 0;           // errno of what makes it unusable
};

mode_t DefaultPermissions() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

bool MayWrite(const std::string& path) {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

Target FindTarget(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    return {path, false, DefaultPermissions(), errno == ENOENT ? 0 : errno};
  }
  if (S_ISDIR(status.st_mode)) return {path, false, 0, EISDIR};
  // These names can mean descriptors that are open already.
  const bool isDescriptor =
      path.starts_with("/dev/std") || path.starts_with("/dev/fd/") || path.starts_with("/proc/");
  if (isDescriptor || !S_ISREG(status.st_mode)) return {path, true, 0, 0};
  std::error_code error;
  const std::string target = std::filesystem::canonical(path, error);
  if (error) return {path, false, 0, error.value()};
  return {target, false, status.st_mode & 0777, MayWrite(path) ? 0 : errno};
}

std::string TemporaryName(const std::string& path) {
  return std::filesystem::path(path).parent_path() / ".campaign_XXXXXX";
}

int WriteDirectly(const std::string& path, const std::string& text) {
  OutputDescriptor file(open(path.c_str(), O_WRONLY | O_APPEND | O_NOCTTY | O_CLOEXEC));
  return file.Get() >= 0 && file.Write(text) && file.Close() ? 0 : errno;
}

int WriteAndRename(const Target& target, const std::string& text) {
  std::string temporary = TemporaryName(target.path);
  OutputDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
  if (file.Get() < 0) return errno;
  if (file.Write(text) && fchmod(file.Get(), target.permissions) == 0 && fsync(file.Get()) == 0 &&
      file.Close() && rename(temporary.c_str(), target.path.c_str()) == 0) {
    return 0;
  }
  const int error = errno;
  unlink(temporary.c_str());
  return error;
}

}  // namespace

std::string CheckWritable(const std::string& path) {
  const Target target = FindTarget(path);
  if (target.error != 0) return Problem(path, target.error);
  if (target.isDirect) return "";
  std::string temporary = TemporaryName(target.path);
  OutputDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
  if (file.Get() < 0) return Problem(path, errno);
  unlink(temporary.c_str());
  return "";
}

std::string WriteWhole(const std::string& path, const std::string& text) {
  const Target target = FindTarget(path);
  const int error = target.error != 0 ? target.error
                    : target.isDirect ? WriteDirectly(path, text)
                                      : WriteAndRename(target, text);
  return error == 0 ? "" : Problem(path, error);
}

}  // namespace campaign
