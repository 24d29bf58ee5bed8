#ifndef VOR_BASE_FILEMODEBITS_H
#define VOR_BASE_FILEMODEBITS_H

#include <sys/stat.h>

namespace vor {

// Each test reads one bit of the mode, not the whole type field.  A socket (0xC000) therefore
// passes both tests, and a block device (0x6000) passes as a directory.  Callers rely on this when
// they select files.

/// Whether \a mode, from stat, has the bit of a regular file.
inline bool HasRegularFileBit(mode_t mode) {
  return (mode & 0x8000) != 0;
}

/// Whether \a mode, from stat, has the bit of a directory.
inline bool HasDirectoryBit(mode_t mode) {
  return (mode & 0x4000) != 0;
}

}  // namespace vor

#endif  // VOR_BASE_FILEMODEBITS_H
