#include "sourcefiles/WholeFile.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string>

#include "base/PosixFile.h"

namespace vor {
namespace {

constexpr std::size_t kLongestText = INT_MAX - 1;  // bytes, so that the NUL can be counted too

// What a file of that content or, if more of it is left, of that size needs.
int NeededMemory(int fd, const std::string& content) {
  struct stat info;
  const std::size_t told =
      fstat(fd, &info) == 0 && info.st_size > 0 ? static_cast<std::size_t>(info.st_size) : 0;
  return static_cast<int>(std::min(std::max(told, content.size()), kLongestText)) + 1;
}

}  // namespace

WholeFile ReadWholeFile(const char* path) {
  WholeFile file;
  const FileDescriptor descriptor = OpenFile(path, O_RDONLY);
  if (!descriptor.IsOpen()) return file;

  std::string content;
  if (!ReadToEnd(descriptor.Get(), content, kLongestText)) {
    if (errno == ENOMEM) file.missingMemory = NeededMemory(descriptor.Get(), content);
    return file;
  }
  file.text.reset(static_cast<char*>(malloc(content.size() + 1)));
  if (file.text == nullptr) {
    file.missingMemory = NeededMemory(descriptor.Get(), content);
    return file;
  }
  memcpy(file.text.get(), content.c_str(), content.size() + 1);
  file.size = static_cast<int>(content.size());
  return file;
}

}  // namespace vor
