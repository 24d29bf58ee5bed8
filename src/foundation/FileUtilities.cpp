#include "foundation/FileUtilities.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "base/FileModeBits.h"
#include "base/PosixFile.h"
#include "base/VorListValVorString.h"
#include "foundation/LineReader.h"

namespace {

constexpr std::size_t kWriteBlock = 1 << 16;  // bytes
constexpr std::size_t kWorkDirRoom = 2048;    // bytes, the terminator included

// Programs between a test harness and its tools may clear or change LD_LIBRARY_PATH.  The harness
// therefore passes the value in TestAutoLibPath too, and it is restored from there.
__attribute__((constructor)) void RecoverLibraryPath() {
  constexpr std::string_view kAssignment = "LD_LIBRARY_PATH=";
  const char* const value = getenv("TestAutoLibPath");
  if (value == nullptr) return;
  const std::size_t size = strlen(value);
  auto* const text = static_cast<char*>(malloc(kAssignment.size() + size + 1));
  if (text == nullptr) return;
  memcpy(text, kAssignment.data(), kAssignment.size());
  memcpy(text + kAssignment.size(), value, size + 1);
  putenv(text);  // the text is now part of the environment and never freed
}

}  // namespace

int ReadFile(const VorString& path, VorListValVorString& lines) noexcept {
  vor::LineReader reader(path);
  std::string_view line;
  while (reader.Next(&line)) lines.Append(VorString(line));
  return reader.IsOpen() ? 0 : 1;
}

int WriteFile(const VorString& path, const VorListValVorString& lines) noexcept {
  const vor::FileDescriptor file = vor::OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.IsOpen()) return 1;
  std::string block;
  for (int i = 1; i <= lines.Size(); ++i) {
    block.append(lines[i].View()).push_back('\n');
    if (block.size() < kWriteBlock && i < lines.Size()) continue;
    if (!vor::WriteAll(file.Get(), block.data(), block.size())) break;
    block.clear();
  }
  return 0;
}

int FileExists(const VorString& path) {
  struct stat info;
  return stat(path, &info) == 0 && vor::HasRegularFileBit(info.st_mode);
}

int SetWorkDir(const VorString& directory) {
  return chdir(directory);
}

VorString GetWorkDir() {
  char text[kWorkDirRoom];
  return VorString(getcwd(text, sizeof text) != nullptr ? text : ".");
}
