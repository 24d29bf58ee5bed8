#ifndef VOR_SOURCEFILES_WHOLEFILE_H
#define VOR_SOURCEFILES_WHOLEFILE_H

#include "base/OwnedText.h"

namespace vor {

/// A file that was read.
struct WholeFile {
  OwnedText text;         // NUL-terminated, without spare room; null if it could not be read
  int size = 0;           // bytes, without the NUL
  int missingMemory = 0;  // bytes that the text would have needed and that were not to be had
};

/// Reads a file whole.  A folder, a file that ends in an error and one of more bytes than an int
/// can count, the NUL included, cannot be read.
WholeFile ReadWholeFile(const char* path);

}  // namespace vor

#endif  // VOR_SOURCEFILES_WHOLEFILE_H
