#ifndef VOR_FOUNDATION_FILEUTILITIES_H
#define VOR_FOUNDATION_FILEUTILITIES_H

#include "base/Export.h"
#include "base/VorString.h"

class TAFileName;
class TAIndex;
class VorListValVorString;

// Whole text files as lists of lines, tests and searches of files, and the working directory.
//
// When the library is loaded and the environment variable TestAutoLibPath is set, its value
// replaces LD_LIBRARY_PATH in the environment of the process, for its children and for what it
// loads later.
//
// Nothing here prints; running out of memory ends the process.  Results are 0 for success and 1 for
// failure unless stated otherwise.
//
// Threads: the working directory belongs to the whole process; otherwise every function may be
// called from any thread, on lists that no other thread uses meanwhile.

/// Adds the lines of the file \a path behind what \a lines holds already; an index takes each
/// different line once, with a null value.  Returns 1, with nothing added, if the file cannot be
/// opened or is a directory.  A later read error ends the file there.
///
/// Callers rely on these quirks: what stands behind the last newline is dropped; a line longer than
/// 4,094 bytes is added in pieces of that length; bytes below 32 and above 127 (tabs, carriage
/// returns, all that is not ASCII) are read as blanks.
VOR_API int ReadFile(const VorString& path, VorListValVorString& lines) noexcept;
VOR_API int ReadFile(const VorString& path, TAIndex& lines) noexcept;

/// Writes each element of \a lines and a newline into the file \a path, which is made or emptied
/// first.  Returns 1 if it cannot be opened.  That not all could be written, because the disk is
/// full say, is not reported.
VOR_API int WriteFile(const VorString& path, const VorListValVorString& lines) noexcept;

/// 1 if \a path is an existing regular file, or a link to one, else 0.
VOR_API int FileExists(const VorString& path);

/// Copies the regular file \a from over \a to, with its permission bits.
VOR_API int CopyFile(const TAFileName& from, const TAFileName& to) noexcept;

/// The first regular file \a name in the directories of \a searchPath, which are separated by ':';
/// an empty name if there is none.
VOR_API TAFileName SearchConcatenation(const VorString& name, const VorString& searchPath) noexcept;

/// The number of paths that ReadDirectory selects for \a pattern.
VOR_API int FileSelectionSize(const VorString& pattern) noexcept;

/// Makes \a directory the working directory of the process.  Returns 0, or -1 with errno set.
VOR_API int SetWorkDir(const VorString& directory);

/// The working directory of the process; "." if it cannot be told in 2,047 bytes.
VOR_API VorString GetWorkDir();

#endif  // VOR_FOUNDATION_FILEUTILITIES_H
