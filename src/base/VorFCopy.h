#ifndef VOR_BASE_VORFCOPY_H
#define VOR_BASE_VORFCOPY_H

#include "Export.h"

class VorUnicodeString;

/// Copies the regular file \a source to \a target.  Holes stay holes.
///
/// If \a replace is 0, an existing target is an error; otherwise its content is replaced.  The
/// target gets the permission bits of the source (read, write, execute), unless it exists and
/// belongs to another user.
///
/// Copying a file onto itself, under whatever name, is an error and leaves the file unchanged.  So
/// is a source or target that is not a regular file, such as a device, a FIFO or a directory.
///
/// Returns 0, or -1 with errno set.  After a failure, a target that this call created is removed.
/// The content of a target that existed before is undefined once writing has begun.
/// Threads: may be called from any thread; the files are not locked.
VOR_API int VorFCopy(const VorUnicodeString& source, const VorUnicodeString& target, int replace);

#endif  // VOR_BASE_VORFCOPY_H
