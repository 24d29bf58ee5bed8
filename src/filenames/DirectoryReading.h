#ifndef VOR_FILENAMES_DIRECTORYREADING_H
#define VOR_FILENAMES_DIRECTORYREADING_H

#include "base/Export.h"

class VorListValTAFileName;
class VorListValVorString;
class VorString;

// Lists of the paths that a pattern with stars selects, and of all files below a directory.
//
// Errors:  none is reported; directories that cannot be read and entries that vanish contribute
//          no paths.  Running out of memory ends the process.
// Threads: every function may be called from any thread, on lists that no other thread uses.  The
//          working directory is only asked for, never changed.

/// Appends the existing paths that \a pattern selects to \a out and sorts all of \a out, earlier
/// contents too, in strcmp order.
///
/// The components of \a pattern between slashes are taken one after the other; empty ones are
/// dropped, so a slash at the end has no effect.  A component with a star selects the entries of
/// the directories found so far that TestMatch accepts, hidden ones too but never "." and "..";
/// any other component is taken as it is.  A pattern that does not begin with a slash starts in
/// the working directory, and the paths are absolute all the same.  A pattern without components
/// selects its start, the root or the working directory with a slash behind it.
///
/// \a pattern may be an element of \a out.
VOR_API void ReadDirectory(const VorString& pattern, VorListValVorString& out) noexcept;
VOR_API void ReadDirectory(const char* pattern, VorListValVorString& out) noexcept;

/// The same as file names, which are in normal form; sorted by their texts.
VOR_API void ReadDirectory(const VorString& pattern, VorListValTAFileName& out) noexcept;
VOR_API void ReadDirectory(const char* pattern, VorListValTAFileName& out) noexcept;

/// Empties \a out and fills it with the paths of all files below the directory \a root, absolute,
/// in normal form and in strcmp order.  If \a root is a file, \a out gets \a root as it was given;
/// if it is neither, \a out stays empty.
///
/// Everything that is not a directory by TAFileName::IsDirectory is listed, directories are not.
/// Links to directories are followed; a cycle of links is followed too, until the system refuses
/// the path, and that last path is listed.  Names are found by their normal form and directories
/// by patterns: a name with a backslash is listed with slashes, and a directory whose name holds a
/// star stands for all directories that the star selects, whose files are then listed again.
/// Names that lead out of the tree in this way, or back to where the walk has been, are left out.
VOR_API void ReadRecursiveDirectory(const VorString& root, VorListValVorString& out) noexcept;

#endif  // VOR_FILENAMES_DIRECTORYREADING_H
