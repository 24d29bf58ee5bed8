#include "filenames/TAFileName.h"

#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "base/FileModeBits.h"
#include "base/NullText.h"
#include "filenames/NormalizePath.h"
#include "foundation/Tracing.h"

/// The shared text: the count of names that share it, and the NUL-terminated characters right after
/// it.
struct TAFileName::TextBlock {
  std::atomic<int> count;

  char* Characters() { return reinterpret_cast<char*>(this + 1); }

  /// A block of count 1 that holds the three pieces, one after the other.
  static TextBlock* Make(std::string_view first, std::string_view second = {},
                         std::string_view third = {}) {
    const std::size_t length = first.size() + second.size() + third.size();
    void* memory = malloc(sizeof(TextBlock) + length + 1);
    FATAL(memory == nullptr, "TAFileName : out of memory");
    TextBlock* block = new (memory) TextBlock{1};
    char* end = block->Characters();
    for (const std::string_view piece : {first, second, third}) {
      end = std::copy(piece.begin(), piece.end(), end);
    }
    *end = '\0';
    return block;
  }

  /// The same in normal form.
  static TextBlock* MakeNormal(std::string_view first, std::string_view second = {},
                               std::string_view third = {}) {
    TextBlock* block = Make(first, second, third);
    vor::NormalizePath(block->Characters(), first.size() + second.size() + third.size());
    return block;
  }

  /// The block of a name made from \a text: in normal form, or null for the empty text.
  static TextBlock* MakeName(std::string_view text) {
    return text.empty() ? nullptr : MakeNormal(text);
  }

  /// The block of a name joined from \a block, which is null for the null name, and \a name.
  static TextBlock* MakeJoin(TextBlock* block, std::string_view name) {
    return block == nullptr ? MakeName(name) : MakeNormal(block->Characters(), "/", name);
  }

  static TextBlock* Share(TextBlock* block) {
    // The name that is copied holds the block, so no memory order is needed.
    if (block != nullptr) block->count.fetch_add(1, std::memory_order_relaxed);
    return block;
  }

  /// Whether another name holds the block.  If none does, all accesses by other threads have
  /// finished.
  bool IsShared() const { return count.load(std::memory_order_acquire) > 1; }

  static void Release(TextBlock* block) {
    if (block == nullptr) return;
    const int left = block->count.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left < 0) abort();
    if (left == 0) free(block);
  }
};

namespace {

constexpr std::size_t kWorkDirSize = 1024;

std::atomic<int> temporaryNames{0};

std::string_view TextOf(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

bool GetMode(const char* path, mode_t& mode) {
  struct stat info;
  if (stat(path, &info) != 0) return false;
  mode = info.st_mode;
  return true;
}

bool IsDirectoryPath(const char* path) {
  mode_t mode;
  return GetMode(path, mode) && vor::HasDirectoryBit(mode);
}

// The length of the path without its last component; 0 if it has no parent, which is so without a
// slash after the first byte.
std::size_t ParentLength(std::string_view path) {
  for (std::size_t i = path.size(); i > 1; --i) {
    if (path[i - 1] == '/') return i - 1;
  }
  return 0;
}

// Walks from a path to its parents, each being dirname(1) of the one before, without a copy for
// each.
class ParentWalk {
 public:
  explicit ParentWalk(std::string_view path) : _path(path) {}

  const std::string& Path() const { return _path; }

  /// False, and the path stays, if there is no further parent.
  bool Up() {
    const std::size_t length = ParentLength(_path);
    if (length == 0) return false;
    _path.resize(length);
    // A text that folds no further has only parents that do not fold either.
    if (!_isStable) {
      _path.resize(vor::NormalizePath(_path.data(), length));
      _isStable = _path.size() == length;
    }
    return true;
  }

 private:
  std::string _path;
  bool _isStable = false;
};

}  // namespace

TAFileName::TAFileName(const char* text) : _text(TextBlock::MakeName(TextOf(text))) {}

TAFileName::TAFileName(const char* text, int length) {
  if (text == nullptr || length <= 0) return;
  _text = TextBlock::MakeName({text, strnlen(text, static_cast<std::size_t>(length))});
}

TAFileName::TAFileName(const VorString& text) : TAFileName(text.CastToCharPtr()) {}

// The name of a part of another name's text.
TAFileName TAFileName::Part(std::string_view text) {
  TAFileName part;
  part._text = TextBlock::MakeName(text);
  return part;
}

TAFileName::TAFileName(const TAFileName& other)
    : _text(TextBlock::Share(other._text)),
      _fullPath(other._fullPath ? new (std::nothrow) TAFileName(*other._fullPath) : nullptr) {}

TAFileName::TAFileName(TAFileName&& other) noexcept
    : _text(std::exchange(other._text, nullptr)), _fullPath(std::move(other._fullPath)) {}

TAFileName& TAFileName::operator=(const TAFileName& other) {
  if (this != &other) *this = TAFileName(other);
  return *this;
}

TAFileName& TAFileName::operator=(TAFileName&& other) noexcept {
  std::swap(_text, other._text);
  _fullPath.swap(other._fullPath);
  return *this;
}

TAFileName& TAFileName::operator=(const char* text) {
  SetText(TextBlock::MakeName(TextOf(text)));
  return *this;
}

TAFileName& TAFileName::operator=(const VorString& text) {
  return *this = text.CastToCharPtr();
}

TAFileName::~TAFileName() {
  TextBlock::Release(_text);
}

// Takes the new block, releases the old one and drops the cached full path.
void TAFileName::SetText(TextBlock* block) {
  TextBlock::Release(std::exchange(_text, block));
  _fullPath.reset();
}

std::string_view TAFileName::View() const {
  return _text == nullptr ? std::string_view() : std::string_view(_text->Characters());
}

void TAFileName::Normalize() {
  if (_text == nullptr) return;
  const std::string_view text = View();
  if (!vor::IsNormalPath(text.data(), text.size())) {
    if (_text->IsShared()) return SetText(TextBlock::MakeNormal(text));
    vor::NormalizePath(_text->Characters(), text.size());
  }
  _fullPath.reset();
}

TAFileName::operator const char*() const {
  return _text == nullptr ? "" : _text->Characters();
}

int TAFileName::IsFile() const {
  mode_t mode;
  return _text != nullptr && GetMode(*this, mode) && vor::HasRegularFileBit(mode);
}

int TAFileName::IsDirectory() const {
  return _text != nullptr && IsDirectoryPath(*this);
}

int TAFileName::IsEqual(const TAFileName& other) const {
  return _text == other._text || View() == other.View();
}

int TAFileName::Compare(TAFileName* left, TAFileName* right) {
  return strcmp(*left, *right);
}

int TAFileName::IsUnderDirectory(const TAFileName& directory) const noexcept {
  if (IsNull() || directory.IsNull()) return 0;
  const std::string_view wanted = directory.View();
  ParentWalk walk(View());
  do {
    if (walk.Path() == wanted) return 1;
  } while (walk.Up());
  return 0;
}

TAFileName TAFileName::operator+(const char* name) const {
  TAFileName joined;
  joined._text = TextBlock::MakeJoin(_text, TextOf(name));
  return joined;
}

TAFileName TAFileName::operator+(const VorString& name) const {
  return *this + name.CastToCharPtr();
}

TAFileName& TAFileName::operator+=(const char* name) {
  SetText(TextBlock::MakeJoin(_text, TextOf(name)));
  return *this;
}

TAFileName TAFileName::basename(int n) const {
  const std::string_view text = View();
  std::size_t end = text.size();
  std::size_t start = end;
  int slashes = 0;
  do {
    end = start;  // the slash before the component looked at last, or the end of the text
    start = end == 0 ? std::string_view::npos : text.rfind('/', end - 1);
    if (start == std::string_view::npos) return *this;
  } while (++slashes < n);
  return Part(text.substr(start + 1, end - start - 1));
}

TAFileName TAFileName::dirname(int n) const {
  if (IsNull() || n < 1) return *this;
  std::string_view text = View();
  for (int i = 0; i < n && !text.empty(); ++i) text = text.substr(0, ParentLength(text));
  return Part(text);
}

VorString TAFileName::Getdirname(int n) const {
  return VorString(dirname(n));
}

TAFileName TAFileName::GetFullPath() {
  if (!_fullPath) {
    TAFileName full(*this);
    if (IsNull()) {
      full = GetWorkDir();
    } else if (View().empty() || View().front() != '/') {
      const TAFileName joined = GetWorkDir() + static_cast<const char*>(*this);
      mode_t ignored;
      if (GetMode(joined, ignored)) full = joined;
    }
    _fullPath.reset(new (std::nothrow) TAFileName(full));
    return full;
  }
  return *_fullPath;
}

VorString TAFileName::GetExtension() const {
  const std::size_t dot = View().rfind('.');
  return dot == std::string_view::npos ? VorString() : VorString(View().substr(dot + 1));
}

int TAFileName::HasExtension(const char* extension) const {
  return extension != nullptr && GetExtension() == extension;
}

void TAFileName::AddExtension(const VorString& extension) {
  const std::string_view added = extension.CastToCharPtr();
  const bool staysNull = IsNull() && added.empty();
  SetText(staysNull ? nullptr : TextBlock::Make(View(), added));
}

void TAFileName::SetExtension(const VorString& extension) {
  const std::size_t dot = View().rfind('.');
  if (dot == std::string_view::npos) return AddExtension(extension);
  SetText(TextBlock::Make(View().substr(0, dot + 1), extension.CastToCharPtr()));
}

void TAFileName::SetAsExecutable() const {
  mode_t mode;
  if (GetMode(*this, mode)) chmod(*this, (mode & 07777) | S_IXUSR);
}

int TAFileName::Delete() const {
  return IsNull() ? 0 : unlink(*this);
}

int TAFileName::CreateDirectory() const {
  return IsNull() ? 1 : mkdir(*this, 0777);
}

int TAFileName::CreateNotExistingDirectory() const {
  if (IsNull()) return -2;
  const int result = mkdir(*this, 0777);
  return result != 0 && errno == EEXIST ? 1 : result;
}

int TAFileName::CreateRecursiveDirectory() const noexcept {
  if (IsDirectory()) return 0;
  // The directories to make, this one first.  A path too long for the system is kept as an empty
  // one: creating it fails as well, and a text of megabytes does not take memory quadratic in its
  // length.
  std::vector<std::string> missing;
  ParentWalk walk(View());
  bool hasParent = true;
  do {
    missing.push_back(walk.Path().size() < PATH_MAX ? walk.Path() : std::string());
    hasParent = walk.Up();
  } while (hasParent && !IsDirectoryPath(walk.Path().c_str()));

  if (!hasParent) {
    // The result for the topmost one is ignored: if it is missing, the next one fails.
    mkdir(missing.back().c_str(), 0777);
    missing.pop_back();
  }
  for (; !missing.empty(); missing.pop_back()) {
    const int result = mkdir(missing.back().c_str(), 0777);
    if (result != 0) return missing.size() == 1 ? result : 1;
  }
  return 0;
}

TAFileName TAFileName::GetWorkDir() {
  if (const char* shellDirectory = getenv("PWD")) return TAFileName(shellDirectory);
  char buffer[kWorkDirSize + 1] = {};
  return TAFileName(getcwd(buffer, kWorkDirSize) == nullptr ? "" : buffer);
}

int TAFileName::SetWorkDir(const TAFileName& directory) {
  return chdir(directory);
}

TAFileName TAFileName::GetTemporaryFileName() noexcept {
  const int number = ++temporaryNames;
  const std::string name = "/tmp/TABase_" + std::to_string(getpid()) + "_" + std::to_string(number);
  return TAFileName(name.c_str());
}

bool operator==(const TAFileName& left, const char* right) {
  return strcmp(left, vor::TextOrEmpty(right)) == 0;
}

std::weak_ordering operator<=>(const TAFileName& left, const TAFileName& right) {
  return left <=> static_cast<const char*>(right);
}

std::weak_ordering operator<=>(const TAFileName& left, const char* right) {
  return strcmp(left, vor::TextOrEmpty(right)) <=> 0;
}
