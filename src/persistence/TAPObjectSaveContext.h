#ifndef VOR_PERSISTENCE_TAPOBJECTSAVECONTEXT_H
#define VOR_PERSISTENCE_TAPOBJECTSAVECONTEXT_H

#include <iosfwd>

#include "../base/Export.h"
#include "../base/VorString.h"
#include "../containers/TAIndex.h"
#include "../filenames/TAFileName.h"

/// One save of a tree of objects: the identifiers that it assigns and the files that it writes.
///
/// Each kind of record has a file of lines in one directory.  UID stands for a decimal number, by
/// which a line refers to a line of another file:
///
/// | file               | one line for each            | line                         |
/// |--------------------|------------------------------|------------------------------|
/// | "Objects.txt"      | attribute of an object       | object UID:name:type:its UID |
/// | "AttrString.txt"   | text                         | UID:text                     |
/// | "AttrFileName.txt" | file name                    | UID:file name                |
/// | "AttrInteger.txt"  | integer                      | UID:number                   |
/// | "AttrObject.txt"   | object that is a value       | UID:object UID               |
/// | "AttrPath.txt"     | path                         | UID:name;name;               |
/// | "AttrList.txt"     | element of a list            | UID:position from 1:its UID  |
///
/// Nothing is escaped, and readers rely on it: they split a line of "Objects.txt" at its first and
/// its last two colons, one of "AttrList.txt" at both and any other at its first.  A newline in a
/// text or name is written as it is, so the rest of that text looks like a line of its own.
///
/// The content of a value is written before the line of its attribute, so identifiers are assigned
/// depth first.  An object that is reached twice is written twice.
///
/// Every line is written to the system by one call as soon as it is complete.
///
/// A save replaces only the files of the kinds that it writes.  Save into an empty directory: a
/// file that an earlier save left there would be read as part of the new one.
///
/// Ownership: the context owns its streams and closes them when it is destroyed.
/// Errors:    not reported: lines of files that cannot be opened or written are lost.  Running out
///            of memory ends the process.
/// Limits:    each level of objects takes about 600 bytes of stack and each level of lists less, so
///            8 MB are enough for 10,000 levels.  Saving an object that contains itself, directly
///            or not, runs out of stack.
/// Threads:   not synchronised; one thread saves one tree.  Two saves to one directory at a time
///            overwrite each other.
class VOR_API TAPObjectSaveContext {
 public:
  explicit TAPObjectSaveContext(TAFileName directory) noexcept;
  TAPObjectSaveContext(const TAPObjectSaveContext&) = delete;
  TAPObjectSaveContext& operator=(const TAPObjectSaveContext&) = delete;
  virtual ~TAPObjectSaveContext();

  /// The next identifier: 0, 1, 2 and so on.
  int GetNewUID();

  /// The stream of the file \a name.txt.  The first call for a name creates the file or empties it.
  /// The state of the stream says whether it could be opened.  Programs that the process starts do
  /// not inherit the file.
  std::fstream* GetStream(VorString name) noexcept;

 private:
  int _nextUid = 0;
  const TAFileName _directory;
  TAIndex _streams;   // from path without extension to std::fstream*, owned
  TAIndex _askedFor;  // the same streams by name, to build each path only once
};

#endif  // VOR_PERSISTENCE_TAPOBJECTSAVECONTEXT_H
