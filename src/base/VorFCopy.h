#ifndef VOR_BASE_VORFCOPY_H
#define VOR_BASE_VORFCOPY_H

#include "base/Export.h"

class VorUnicodeString;

/// Copies the regular file \a source to \a target with its permission bits for reading, writing
/// and executing; an existing target that belongs to somebody else keeps its own.  Holes stay
/// holes.
///
/// With \a replace 1 an existing target gets the new content; with 0 it is an error.  A file is
/// never copied onto itself, not under another name either: that is an error and leaves it whole.
/// Neither end may be a device, a FIFO or a directory.
/// After a failure a target that this call made is removed again; the content of one that existed
/// before is undefined once writing has begun.
///
/// Returns 0, or -1 with the reason in errno.
/// Threads: may be called from any thread; the files are not locked.
VOR_API int VorFCopy(const VorUnicodeString& source, const VorUnicodeString& target, int replace);

#endif  // VOR_BASE_VORFCOPY_H
