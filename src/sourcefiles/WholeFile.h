#ifndef VOR_SOURCEFILES_WHOLEFILE_H
#define VOR_SOURCEFILES_WHOLEFILE_H

#include <climits>
#include <cstddef>
#include <optional>

#include "base/OwnedText.h"
#include "base/PosixFile.h"

namespace vor {

/// The longest text of a file, in bytes without its NUL: an int can count it with its NUL.
constexpr std::size_t kLongestText = INT_MAX - 1;

/// A file that was read.
struct WholeFile {
  OwnedText text;         // NUL-terminated, without spare room; null if it could not be read
  int size = 0;           // bytes, without the NUL
  int missingMemory = 0;  // bytes that were asked for when memory ran out; else 0
};

/// Reads an open file to its end into one block, without a second copy.  Fails for a directory, a
/// file longer than kLongestText, and after a read error.
WholeFile ReadWholeFile(const FileDescriptor& file);

/// Opens a file that can be read without waiting for another process: a regular file or a
/// directory.  Returns a closed descriptor if it cannot be opened.  Returns no value for a pipe, a
/// device or a socket; it does not open these, because a writer may be waiting for a reader.
std::optional<FileDescriptor> OpenWithoutWaiting(const char* path);

/// The size of a regular file in bytes, by fstat; 0 for any other file.
std::size_t KnownSize(const FileDescriptor& file);

/// Shrinks the block of \a text to \a size bytes and the NUL.
void DropSpareRoom(OwnedText& text, std::size_t size);

}  // namespace vor

#endif  // VOR_SOURCEFILES_WHOLEFILE_H
