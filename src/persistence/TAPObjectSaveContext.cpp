#include "persistence/TAPObjectSaveContext.h"

#include <fcntl.h>
#include <ext/stdio_filebuf.h>

#include <fstream>
#include <locale>
#include <memory>
#include <utility>

#include "base/PosixFile.h"
#include "foundation/Tracing.h"

namespace {

constexpr mode_t kDefaultProtection = 0666;  // less the umask

// A stream on an emptied file, in a failed state if the file cannot be opened.  Not opened by
// fstream::open, which would let children inherit the file.
std::unique_ptr<std::fstream> OpenStream(const char* path) {
  auto stream = std::make_unique<std::fstream>();
  vor::FileDescriptor file =
      vor::OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY, kDefaultProtection);
  if (file.IsOpen()) {
    *stream->rdbuf() = __gnu_cxx::stdio_filebuf<char>(file.Release(), std::ios::out);
  }
  stream->imbue(std::locale::classic());  // bytes are written as they are, whatever the locale
  if (!stream->is_open()) stream->setstate(std::ios::failbit);
  return stream;
}

void Add(TAIndex& streams, const char* key, void* stream) {
  FATAL(streams.Append(key, stream) == nullptr,
        "TAPObjectSaveContext::GetStream failed, memory allocation failed");
}

}  // namespace

TAPObjectSaveContext::TAPObjectSaveContext(TAFileName directory) noexcept
    : _directory(std::move(directory)) {}

TAPObjectSaveContext::~TAPObjectSaveContext() {
  for (int i = _streams.count - 1; i >= 0; --i) {
    delete static_cast<std::fstream*>(_streams.values[i]);  // closes
  }
}

int TAPObjectSaveContext::GetNewUID() {
  return std::exchange(_nextUid, static_cast<int>(static_cast<unsigned>(_nextUid) + 1));
}

std::fstream* TAPObjectSaveContext::GetStream(VorString name) noexcept {
  void* stream = _askedFor[name];
  if (stream == nullptr) {
    const TAFileName key = _directory + name;
    stream = _streams[key];
    if (stream == nullptr) {
      stream = OpenStream(_directory + (name + ".txt")).release();
      Add(_streams, key, stream);
    }
    Add(_askedFor, name, stream);
  }
  return static_cast<std::fstream*>(stream);
}
