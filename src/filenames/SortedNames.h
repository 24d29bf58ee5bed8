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
/// A name that is a step on the way to others is kept with the slash that follows it.  Where the
/// names are walked in order and each step is followed by the names below it, whole paths come in
/// strcmp order, because nothing else in a directory begins with a step and its slash.
class SortedNames {
 public:
  /// Empties the list; its memory is kept for the next names.
  void Clear();
  /// Adds a name, which holds no NUL byte.
  void Add(std::string_view name, bool isStep);
  void Sort();

  /// The number of names, once they are sorted.
  std::size_t Size() const { return _items.size(); }
  /// The name at a 0-based position, with its slash if it is a step.
  std::string_view operator[](std::size_t position) const { return _items[position].name; }

 private:
 private:
  struct Item {
    std::uint64_t key;  // the first bytes in which the names may differ
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

  // The names, each with its terminator.  They are never moved, and the array of items is made
  // when their number is known: large directories cost little more memory than their names.
  std::vector<Block> _blocks;
  std::size_t _usedBlocks = 0;
  std::size_t _count = 0;
  std::vector<Item> _items;
};

}  // namespace vor

#endif  // VOR_FILENAMES_SORTEDNAMES_H
