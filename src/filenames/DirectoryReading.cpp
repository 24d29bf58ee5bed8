#include "filenames/DirectoryReading.h"

#include <dirent.h>
#include <errno.h>
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/FileModeBits.h"
#include "base/VorListValVorString.h"
#include "base/VorString.h"
#include "filenames/NormalizePath.h"
#include "filenames/SortedNames.h"
#include "filenames/TAFileName.h"
#include "foundation/FieldScan.h"
#include "foundation/FileUtilities.h"
#include "foundation/PatternMatch.h"
#include "foundation/TextUtilities.h"

namespace {

std::string_view AsC(const VorString& text) {
  return text.CastToCharPtr();
}

bool Exists(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0;
}

bool IsDirectory(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && vor::HasDirectoryBit(info.st_mode);
}

bool HasStar(std::string_view text) {
  return text.find('*') != std::string_view::npos;
}

bool HasBackslash(std::string_view text) {
  return text.find('\\') != std::string_view::npos;
}

// Calls use(name, type) for each entry but "." and "..", type being the d_type of readdir.  False,
// with the reason in errno, if the directory cannot be opened.
template <typename Use>
bool ForEachEntry(const std::string& directory, Use use) {
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(directory.c_str()), closedir);
  if (!stream) return false;
  while (const dirent* entry = readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") use(name, entry->d_type);
  }
  return true;
}

// False for entries that are known not to be directories.
bool MayBeDirectory(unsigned char type) {
  return type == DT_DIR || type == DT_LNK || type == DT_UNKNOWN;
}

std::vector<std::string_view> Components(std::string_view path) {
  std::vector<std::string_view> components;
  vor::FieldScan scan(path, "/");
  for (std::string_view component; scan.Next(&component);) components.push_back(component);
  return components;
}

// The directory in which a pattern starts, with a slash.  In the root directory that is "//".
std::string StartOf(std::string_view pattern) {
  return pattern.starts_with('/') ? "/" : std::string(GetWorkDir().View()) + "/";
}

// The absolute path of a directory and a slash; only empty components are folded.
std::string WithStart(std::string_view directory) {
  std::string path = StartOf(directory);
  for (const std::string_view component : Components(directory)) path.append(component) += '/';
  return path;
}

std::string Normal(std::string path) {
  path.resize(vor::NormalizePath(path.data(), path.size()));
  return path;
}

// The beginning that the entries of a directory, which ends in a slash, have in normal form.
std::string NormalPrefix(const std::string& directory) {
  std::string entry = Normal(directory + "x");
  entry.pop_back();
  return entry;
}

std::string Join(std::string_view directory, std::string_view name) {
  std::string path;
  path.reserve(directory.size() + name.size());
  path.append(directory).append(name);
  return path;
}

// Calls use(path) for each entry of the directories that a component with a star selects, in
// strcmp order if the directories are.
template <typename Use>
void ForEachSelected(const std::vector<std::string>& directories, std::string_view component,
                     bool isLast, Use use) {
  vor::SortedNames names;
  for (const std::string& directory : directories) {
    names.Clear();
    ForEachEntry(directory, [&](std::string_view name, unsigned char type) {
      // The next component would fail on a file in the middle of a path.
      if ((isLast || MayBeDirectory(type)) && vor::MatchesPattern(name, component)) {
        names.Add(name, !isLast);
      }
    });
    names.Sort();
    for (std::size_t i = 0; i < names.Size(); ++i) use(Join(directory, names[i]));
  }
}

// Calls use(path) for each path that a pattern selects, in strcmp order.  They stay in order from
// component to component: all end with a slash and have equally many of them, so none begins with
// another.
template <typename Use>
void ForEachPath(std::string_view pattern, Use use) {
  const std::vector<std::string_view> components = Components(pattern);
  std::vector<std::string> paths{StartOf(pattern)};
  for (std::size_t k = 0; k + 1 < components.size(); ++k) {
    if (HasStar(components[k])) {
      std::vector<std::string> next;
      ForEachSelected(paths, components[k], false,
                      [&next](std::string path) { next.push_back(std::move(path)); });
      paths.swap(next);
    } else {
      // Not tested here: a path exists only if its parents do.
      for (std::string& path : paths) path.append(components[k]) += '/';
    }
  }
  if (!components.empty() && HasStar(components.back())) {
    return ForEachSelected(paths, components.back(), true, use);
  }
  for (std::string& path : paths) {
    if (!components.empty()) path += components.back();
    if (components.empty() || Exists(path)) use(std::move(path));
  }
}

// Lists the files below a directory.
//
// The files below a directory d are defined by patterns: the paths that d/* selects, in normal
// form, and the files below those of them that are directories.  For nearly all trees that is a
// plain walk, which reads each directory once, calls stat on no file and meets the paths in strcmp
// order.  If the normal form changes a name, or a name is itself a pattern, that pattern is
// expanded and the paths are sorted at the end.
//
// The normal form of a name such as "x\..\..\etc" is another path.  The name stands for that path
// if it is below the root and deeper than the directory of the name; otherwise the name is dropped.
// So no name leads out of the tree and none leads in a circle.
class TreeReader {
 public:
  // Appends to out, which the caller has emptied.
  explicit TreeReader(VorListValVorString& out) : _out(out) {}

  // Appends the files below root in strcmp order.
  void Read(std::string_view root) {
    const std::string_view plain = root.substr(0, root.find('*'));
    _base = NormalPrefix(
        WithStart(plain.size() == root.size() ? root : plain.substr(0, plain.rfind('/') + 1)));
    _pending.push_back({std::string(root), Depth(NormalPrefix(WithStart(root)))});
    while (!_pending.empty()) {
      const Directory directory = std::move(_pending.back());
      _pending.pop_back();
      if (!WalkFrom(directory)) ListByPattern(directory);
    }
    if (!_isInOrder) _out.QuickSort(CompareTAStrings);
  }

 private:
  struct Directory {
    std::string path;
    std::size_t depth;
  };

  // A directory that the walk is in.
  struct Level {
    std::string prefix;  // its path in normal form and a slash
    vor::SortedNames names;
    std::size_t next = 0;  // in names
  };

  void Append(std::string path) { _out.Append(VorString(std::move(path))); }

  static std::size_t Depth(std::string_view path) { return Components(path).size(); }

  // Adds an entry, of a directory of that depth, that the plain walk cannot take.
  void Add(const std::string& entry, std::size_t depth) {
    std::string path = Normal(entry);
    const std::size_t ownDepth = Depth(path);
    if (ownDepth <= depth || !path.starts_with(_base)) return;
    _isInOrder = false;
    if (IsDirectory(path)) {
      _pending.push_back({std::move(path), ownDepth});
    } else {
      Append(std::move(path));
    }
  }

  void ListByPattern(const Directory& directory) {
    ForEachPath(directory.path + "/*",
                [&](const std::string& entry) { Add(entry, directory.depth); });
  }

  // Walks the tree below a directory; false if that needs patterns.
  bool WalkFrom(const Directory& directory) {
    if (HasStar(directory.path)) return false;
    const std::string path = WithStart(directory.path);
    // Its normal form may be another directory.
    if (path.front() != '/' || HasBackslash(path) || path.find("/../") != std::string::npos) {
      return false;
    }
    _startDepth = directory.depth;
    Enter(path, NormalPrefix(path));
    while (_level > 0) Step();
    return true;
  }

  // Lists the next file of the current directory, or enters or leaves a directory.
  void Step() {
    Level& level = _levels[_level - 1];
    if (level.next == level.names.Size()) {
      --_level;
      return;
    }
    const std::string_view name = level.names[level.next++];
    std::string path = Join(level.prefix, name);
    if (!path.ends_with('/')) {
      Append(std::move(path));
    } else if (!Enter(path, path) && errno == EACCES) {
      // In a directory that may be read but not searched, no entry can be seen to be a directory.
      path.pop_back();
      _isInOrder = false;
      if (!Exists(path)) Append(std::move(path));
    }
  }

  // Reads a directory; false, with the reason in errno, if it cannot be opened.
  bool Enter(const std::string& path, const std::string& prefix) {
    if (_level == _levels.size()) _levels.emplace_back();
    Level& level = _levels[_level];
    level.prefix = prefix;
    level.names.Clear();
    level.next = 0;
    const std::size_t depth = _startDepth + _level;
    const bool isOpen = ForEachEntry(path, [&](std::string_view name, unsigned char type) {
      if (HasStar(name) || HasBackslash(name)) {
        Add(Join(path, name), depth);
      } else {
        level.names.Add(name, IsDirectoryEntry(prefix, name, type));
      }
    });
    if (!isOpen) return false;
    level.names.Sort();
    ++_level;
    return true;
  }

  static bool IsDirectoryEntry(const std::string& prefix, std::string_view name,
                               unsigned char type) {
    if (type == DT_REG || type == DT_FIFO || type == DT_CHR) return false;
    if (type == DT_DIR) return prefix.size() + name.size() < PATH_MAX;  // as stat would report
    return IsDirectory(Join(prefix, name));
  }

  std::string _base;  // the beginning of all paths
  VorListValVorString& _out;
  bool _isInOrder = true;           // of _out
  std::vector<Directory> _pending;  // still to be listed
  std::size_t _startDepth = 0;      // of the directory where the walk started
  std::size_t _level = 0;           // how many directories the walk is in
  std::vector<Level> _levels;       // those; further ones are kept for their memory
};

}  // namespace

void ReadDirectory(const VorString& pattern, VorListValVorString& out) noexcept {
  const std::string given(AsC(pattern));  // pattern may be an element of out
  const bool isInOrder = out.Size() == 0;
  ForEachPath(given, [&out](std::string path) { out.Append(VorString(std::move(path))); });
  if (!isInOrder) out.QuickSort(CompareTAStrings);
}

void ReadDirectory(const char* pattern, VorListValVorString& out) noexcept {
  ReadDirectory(VorString(pattern), out);
}

void ReadDirectory(const VorString& pattern, VorListValTAFileName& out) noexcept {
  ForEachPath(AsC(pattern),
              [&out](const std::string& path) { out.Append(TAFileName(path.c_str())); });
  out.QuickSort(CompareTAStrings);
}

void ReadDirectory(const char* pattern, VorListValTAFileName& out) noexcept {
  ReadDirectory(VorString(pattern), out);
}

void ReadRecursiveDirectory(const VorString& root, VorListValVorString& out) noexcept {
  const std::string given(root.View());  // root may be an element of out
  out.RemoveAll(VorCollec::KeepMemory);
  const TAFileName name(given.c_str());
  if (name.IsFile()) {
    out.Append(VorString(given));
  } else if (name.IsDirectory()) {
    TreeReader(out).Read(given.c_str());
  }
}
