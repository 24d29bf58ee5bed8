#include "filenames/SortedNames.h"

#include <string.h>

#include <algorithm>

namespace vor {
namespace {

constexpr std::size_t kBlockSize = 1 << 16;
constexpr std::size_t kKeySize = sizeof(std::uint64_t);

// The first bytes of a text as a number that has their order; a shorter text comes first.
std::uint64_t KeyOf(const char* text) {
  std::uint64_t key = 0;
  std::size_t left = kKeySize;
  for (; left > 0 && *text != '\0'; --left) key = key << 8 | static_cast<unsigned char>(*text++);
  return left == kKeySize ? 0 : key << (8 * left);
}

}  // namespace

void SortedNames::Clear() {
  _items.clear();
  _usedBlocks = 0;
  _count = 0;
}

char* SortedNames::Room(std::size_t size) {
  while (_usedBlocks == 0 || _blocks[_usedBlocks - 1].size - _blocks[_usedBlocks - 1].used < size) {
    if (_usedBlocks == _blocks.size()) {
      const std::size_t blockSize = std::max(kBlockSize, size);
      _blocks.push_back({std::make_unique_for_overwrite<char[]>(blockSize), blockSize, 0});
    }
    _blocks[_usedBlocks++].used = 0;
  }
  Block& block = _blocks[_usedBlocks - 1];
  char* const room = block.bytes.get() + block.used;
  block.used += size;
  return room;
}

void SortedNames::Add(std::string_view name, bool isStep) {
  char* end = Room(name.size() + (isStep ? 2 : 1));
  end = std::copy(name.begin(), name.end(), end);
  if (isStep) *end++ = '/';
  *end = '\0';
  ++_count;
}

void SortedNames::ListNames() {
  _items.clear();
  _items.reserve(_count);
  for (std::size_t i = 0; i < _usedBlocks; ++i) {
    const char* name = _blocks[i].bytes.get();
    const char* const end = name + _blocks[i].used;
    for (; name != end; name += strlen(name) + 1) _items.push_back({0, name});
  }
}

// How many bytes all names begin with in common.
std::size_t SortedNames::CommonLength() const {
  if (_items.empty()) return 0;
  const char* const first = _items[0].name;
  std::size_t common = strlen(first);
  for (const Item& item : _items) {
    std::size_t equal = 0;
    while (equal < common && item.name[equal] == first[equal]) ++equal;
    common = equal;
  }
  return common;
}

void SortedNames::Sort() {
  ListNames();
  // The files of one directory often have similar names.  With their common beginning skipped, one
  // comparison of numbers orders most pairs.
  const std::size_t common = CommonLength();
  for (Item& item : _items) item.key = KeyOf(item.name + common);

  std::sort(_items.begin(), _items.end(), [common](const Item& left, const Item& right) {
    if (left.key != right.key) return left.key < right.key;
    if ((left.key & 0xff) == 0) return false;  // both end within the key
    const std::size_t compared = common + kKeySize;
    return strcmp(left.name + compared, right.name + compared) < 0;
  });
}

}  // namespace vor
