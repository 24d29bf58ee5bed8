#ifndef VOR_FILENAMES_FILEMODEBITS_H
#define VOR_FILENAMES_FILEMODEBITS_H

#include <sys/stat.h>

namespace vor {

// What counts as a file and as a directory is asked by single mode bits and not by the whole type
// field: a socket (0xC000) has both bits, a block device (0x6000) the directory's.  File selections
// of the callers rely on it.

inline bool HasRegularFileBit(mode_t mode) {
  return (mode & 0x8000) != 0;
}

inline bool HasDirectoryBit(mode_t mode) {
  return (mode & 0x4000) != 0;
}

}  // namespace vor

#endif  // VOR_FILENAMES_FILEMODEBITS_H
