#include "sourcefiles/WholeFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace vor {
namespace {

constexpr std::size_t kFirstRoom = 0x10000;  // bytes, if the size of the file is not known

// Grows or shrinks the block to \a bytes and keeps its content.  Without memory, returns false and
// changes nothing.
bool Resize(OwnedText& text, std::size_t bytes) {
  auto* const resized = static_cast<char*>(realloc(text.get(), bytes));
  if (resized == nullptr) return false;
  static_cast<void>(text.release());  // realloc has taken it
  text.reset(resized);
  return true;
}

// Whether reading it ends without another process.
bool IsOnDisk(const struct stat& info) {
  return S_ISREG(info.st_mode) || S_ISDIR(info.st_mode);
}

}  // namespace

WholeFile ReadWholeFile(const FileDescriptor& file) {
  WholeFile whole;
  if (!file.IsOpen()) return whole;
  OwnedText text;
  std::size_t size = 0;
  // One byte more: the read that finds the end of the file needs room.
  const std::size_t known = KnownSize(file);
  std::size_t room = known > 0 ? known + 1 : kFirstRoom;
  for (;;) {
    if (size > kLongestText || room > kLongestText + 1) return whole;
    if (!Resize(text, room + 1)) {
      whole.missingMemory = static_cast<int>(std::min(room, kLongestText) + 1);
      return whole;
    }
    while (size < room) {
      const ssize_t count = ReadSome(file.Get(), text.get() + size, room - size);
      if (count < 0) return whole;
      if (count == 0) {
        text.get()[size] = '\0';
        DropSpareRoom(text, size);
        whole.text = std::move(text);
        whole.size = static_cast<int>(size);
        return whole;
      }
      size += static_cast<std::size_t>(count);
    }
    room = std::min(size + std::max(size / 2, kFirstRoom), kLongestText + 1);
  }
}

std::optional<FileDescriptor> OpenWithoutWaiting(const char* path) {
  struct stat info;
  if (stat(path, &info) == 0 && !IsOnDisk(info)) return std::nullopt;
  FileDescriptor file = OpenFile(path, O_RDONLY | O_NONBLOCK);
  if (!file.IsOpen() && errno == EWOULDBLOCK) return std::nullopt;  // a lease is being broken
  // The file may have been replaced meanwhile.
  if (file.IsOpen() && (fstat(file.Get(), &info) != 0 || !IsOnDisk(info))) return std::nullopt;
  return file;
}

std::size_t KnownSize(const FileDescriptor& file) {
  struct stat info;
  const bool isKnown = fstat(file.Get(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0;
  return isKnown ? static_cast<std::size_t>(info.st_size) : 0;
}

void DropSpareRoom(OwnedText& text, std::size_t size) {
  Resize(text, size + 1);  // without memory for a smaller block the large one stays
}

}  // namespace vor
