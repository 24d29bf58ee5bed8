#ifndef VOR_FILENAMES_DIRECTORYREADING_H
#define VOR_FILENAMES_DIRECTORYREADING_H

#include "../base/Export.h"

class VorListValTAFileName;
class VorListValVorString;
class VorString;

// Lists the paths that a pattern with stars selects, or all files below a directory.
//
// Errors:  none is reported; directories that cannot be read and entries that vanish contribute no
//          paths.  Running out of memory ends the process.
// Threads: every function may be called from any thread, on lists that no other thread uses.  The
//          working directory is read, never changed.

/// Appends the existing paths that \a pattern selects to \a out and sorts all of \a out, earlier
/// contents included, in strcmp order.
///
/// Slashes separate the components of \a pattern.  Empty components are dropped, so a slash at the
/// end has no effect.  The components are applied from left to right:
///  - One with a star selects those entries of the directories found so far that TestMatch accepts.
///    Hidden entries are selected too, but never "." and "..".
///  - Any other component names one entry.
///
/// A pattern that begins with a slash starts at the root, any other in the working directory; the
/// paths are absolute in both cases.  A pattern without components selects its start: "/", or the
/// working directory followed by a slash.
///
/// \a pattern may be an element of \a out.
VOR_API void ReadDirectory(const VorString& pattern, VorListValVorString& out) noexcept;
VOR_API void ReadDirectory(const char* pattern, VorListValVorString& out) noexcept;

/// The same with file names as elements, sorted by their texts in normal form.
VOR_API void ReadDirectory(const VorString& pattern, VorListValTAFileName& out) noexcept;
VOR_API void ReadDirectory(const char* pattern, VorListValTAFileName& out) noexcept;

/// Empties \a out and fills it with the paths of all files below the directory \a root, absolute,
/// in normal form and in strcmp order.  If \a root is a file, \a out receives \a root as it was
/// given.  If it is neither, \a out stays empty.
///
/// Every entry for which TAFileName::IsDirectory returns 0 is a file.  Links to directories are
/// followed.  A cycle of links is followed until the system refuses the path, and that last path is
/// listed.
///
/// Two kinds of names are special, because names are kept in normal form and directories are read
/// by patterns.  A name with a backslash is listed with slashes.  A directory whose name contains a
/// star is read as a pattern, so the files of all directories that it selects are listed again.
/// Such a name is left out if it would lead out of the tree or in a circle.
VOR_API void ReadRecursiveDirectory(const VorString& root, VorListValVorString& out) noexcept;

#endif  // VOR_FILENAMES_DIRECTORYREADING_H
