#ifndef VOR_FILENAMES_SORTEDNAMES_H
#define VOR_FILENAMES_SORTEDNAMES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace vor {

/// The names of some entries of one directory, to be walked in strcmp order.
///
/// The name of a directory that will be entered, a step, is kept with a slash at its end.  A walk
/// that takes the names in order, and the entries of each step right after it, meets whole paths in
/// strcmp order: no other name of the directory begins with a step and its slash.
class SortedNames {
 public:
  /// Empties the list and keeps its memory for the next names.
  void Clear();
  /// Adds a name, which holds no NUL byte.
  void Add(std::string_view name, bool isStep);
  void Sort();

  /// The number of names; valid after Sort.
  std::size_t Size() const { return _items.size(); }
  /// The name at a 0-based position, with its slash if it is a step.
  std::string_view operator[](std::size_t position) const { return _items[position].name; }

 private:
  struct Item {
    std::uint64_t key;  // the first bytes after those that all names have in common
    const char* name;   // in one of the blocks
  };
  struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t size;
    std::size_t used;
  };

  char* Room(std::size_t size);
  void ListNames();
  std::size_t CommonLength() const;

  // The names, each with its terminator.  They are never moved, and the items are made when the
  // number of names is known: a large directory costs little more memory than its names.
  std::vector<Block> _blocks;
  std::size_t _usedBlocks = 0;
  std::size_t _count = 0;
  std::vector<Item> _items;
};

}  // namespace vor

#endif  // VOR_FILENAMES_SORTEDNAMES_H
