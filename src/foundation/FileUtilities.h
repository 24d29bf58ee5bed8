#ifndef VOR_FOUNDATION_FILEUTILITIES_H
#define VOR_FOUNDATION_FILEUTILITIES_H

#include "../base/Export.h"
#include "../base/VorString.h"

class TAFileName;
class TAIndex;
class VorListValVorString;

// Text files as lists of lines, file tests and searches, and the working directory.
//
// If the environment variable TestAutoLibPath is set when the library is loaded, its value replaces
// LD_LIBRARY_PATH in the environment of the process.  This affects child processes and libraries
// that are loaded later.
//
// Functions return 0 for success and 1 for failure unless stated otherwise.  Nothing here prints;
// running out of memory ends the process.
// Threads: every function may be called from any thread, with lists that no other thread uses at
// the same time.  The working directory belongs to the whole process.

/// Appends the lines of the file \a path to \a lines; an index gets each distinct line once, with a
/// null value.  Returns 1, with nothing added, if the file cannot be opened or is a directory.  A
/// read error after that counts as the end of file.
///
/// Callers rely on these quirks.  Text after the last newline is dropped.  A line longer than 4,094
/// bytes is added in pieces of that length.  Bytes below 32 and above 127 (tabs, carriage returns,
/// all that is not ASCII) become blanks.
VOR_API int ReadFile(const VorString& path, VorListValVorString& lines) noexcept;
VOR_API int ReadFile(const VorString& path, TAIndex& lines) noexcept;

/// Writes each element of \a lines and a newline to the file \a path, which is created or emptied
/// first.  Returns 1 if it cannot be opened.  A write error, on a full disk for instance, is not
/// reported.
VOR_API int WriteFile(const VorString& path, const VorListValVorString& lines) noexcept;

/// 1 if \a path exists and its mode has the bit of a regular file (as TAFileName::IsFile), else 0.
/// Links are followed.
VOR_API int FileExists(const VorString& path);

/// Copies the regular file \a from to \a to, with its permission bits; an existing file is
/// replaced.
VOR_API int CopyFile(const TAFileName& from, const TAFileName& to) noexcept;

/// The first regular file \a name in the directories of \a searchPath, which ':' separates; an
/// empty name if there is none.
VOR_API TAFileName SearchConcatenation(const VorString& name, const VorString& searchPath) noexcept;

/// The number of paths that ReadDirectory selects for \a pattern.
VOR_API int FileSelectionSize(const VorString& pattern) noexcept;

/// Makes \a directory the working directory of the process.  Returns 0, or -1 with errno set.
VOR_API int SetWorkDir(const VorString& directory);

/// The working directory of the process; "." if it is longer than 2,047 bytes or cannot be read.
VOR_API VorString GetWorkDir();

#endif  // VOR_FOUNDATION_FILEUTILITIES_H
