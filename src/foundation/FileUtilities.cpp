#include "foundation/FileUtilities.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/PosixFile.h"
#include "base/VorFCopy.h"
#include "base/VorListValVorString.h"
#include "base/VorUnicodeString.h"
#include "containers/TAIndex.h"
#include "filenames/DirectoryReading.h"
#include "filenames/TAFileName.h"
#include "foundation/FieldScan.h"

namespace {

constexpr std::size_t kLongestRead = 4094;  // bytes of a line that come as one
constexpr std::size_t kBlock = 1 << 16;     // bytes read or written at once
constexpr std::size_t kWorkDirRoom = 2048;  // bytes, the terminator included

// Replaces bytes below 32, newlines excepted, and above 127, which are negative as signed ones.
void BlankOut(char* text, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<signed char>(text[i]);
    text[i] = byte < ' ' && byte != '\n' ? ' ' : text[i];
  }
}

// Hands all lines of a block that are certain to be whole, and pieces of longer ones, to sink, each
// with a NUL behind it.  Returns how many bytes these are.
template <typename Sink>
std::size_t TakeLines(char* block, std::size_t size, Sink sink) {
  char* const end = block + size;
  for (char* line = block;;) {
    const auto rest = static_cast<std::size_t>(end - line);
    // The byte behind the longest piece tells whether the line ends there.
    auto* lineEnd = static_cast<char*>(memchr(line, '\n', std::min(rest, kLongestRead + 1)));
    const bool terminated = lineEnd != nullptr;
    if (!terminated && rest <= kLongestRead) return static_cast<std::size_t>(line - block);
    if (!terminated) lineEnd = line + kLongestRead;
    const char covered = std::exchange(*lineEnd, '\0');
    sink(std::string_view(line, static_cast<std::size_t>(lineEnd - line)));
    *lineEnd = covered;
    line = terminated ? lineEnd + 1 : lineEnd;
  }
}

// Goes through the file block by block, so that memory does not grow with it.
template <typename Sink>
int ReadLines(const char* path, Sink sink) {
  const vor::FileDescriptor file = vor::OpenFile(path, O_RDONLY);
  struct stat info;
  if (!file.IsOpen() || fstat(file.Get(), &info) != 0 || S_ISDIR(info.st_mode)) return 1;
  const auto block = std::make_unique_for_overwrite<char[]>(kBlock);
  std::size_t held = 0;  // bytes of a line whose end is not read yet
  for (;;) {
    const ssize_t count = vor::ReadSome(file.Get(), block.get() + held, kBlock - held);
    if (count <= 0) return 0;  // at the end and after an error alike, what is held is dropped
    BlankOut(block.get() + held, static_cast<std::size_t>(count));
    const std::size_t size = held + static_cast<std::size_t>(count);
    const std::size_t taken = TakeLines(block.get(), size, sink);
    held = size - taken;
    memmove(block.get(), block.get() + taken, held);
  }
}

// Test harnesses cannot hand a library path through programs that clear or change
// LD_LIBRARY_PATH; this variable of their own brings it back.
__attribute__((constructor)) void RecoverLibraryPath() {
  constexpr std::string_view kAssignment = "LD_LIBRARY_PATH=";
  const char* const value = getenv("TestAutoLibPath");
  if (value == nullptr) return;
  const std::size_t size = strlen(value);
  auto* const text = static_cast<char*>(malloc(kAssignment.size() + size + 1));
  if (text == nullptr) return;
  memcpy(text, kAssignment.data(), kAssignment.size());
  memcpy(text + kAssignment.size(), value, size + 1);
  putenv(text);  // the text is part of the environment from now on and never freed
}

}  // namespace

int ReadFile(const VorString& path, VorListValVorString& lines) noexcept {
  return ReadLines(path, [&lines](std::string_view line) { lines.Append(VorString(line)); });
}

int ReadFile(const VorString& path, TAIndex& lines) noexcept {
  return ReadLines(path, [&lines](std::string_view line) { lines.Append(line.data(), nullptr); });
}

int WriteFile(const VorString& path, const VorListValVorString& lines) noexcept {
  const vor::FileDescriptor file = vor::OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.IsOpen()) return 1;
  std::string block;
  for (int i = 1; i <= lines.Size(); ++i) {
    block.append(lines[i].View()).push_back('\n');
    if (block.size() < kBlock && i < lines.Size()) continue;
    if (!vor::WriteAll(file.Get(), block.data(), block.size())) break;
    block.clear();
  }
  return 0;
}

int FileExists(const VorString& path) {
  struct stat info;
  return stat(path, &info) == 0 && S_ISREG(info.st_mode);
}

int CopyFile(const TAFileName& from, const TAFileName& to) noexcept {
  if (from.IsFile() == 0) return 1;
  return VorFCopy(VorUnicodeString(from), VorUnicodeString(to), 1) < 0;
}

TAFileName SearchConcatenation(const VorString& name, const VorString& searchPath) noexcept {
  vor::FieldScan scan(searchPath.View(), ":");
  std::string_view directory;
  while (scan.Next(&directory)) {
    TAFileName candidate = TAFileName(VorString(directory)) + name;
    if (candidate.IsFile() != 0) return candidate;
  }
  return TAFileName();
}

int FileSelectionSize(const VorString& pattern) noexcept {
  VorListValVorString selected;
  ReadDirectory(pattern, selected);
  return selected.Size();
}

int SetWorkDir(const VorString& directory) {
  return chdir(directory);
}

VorString GetWorkDir() {
  char text[kWorkDirRoom];
  return VorString(getcwd(text, sizeof text) != nullptr ? text : ".");
}
