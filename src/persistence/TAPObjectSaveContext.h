#ifndef VOR_PERSISTENCE_TAPOBJECTSAVECONTEXT_H
#define VOR_PERSISTENCE_TAPOBJECTSAVECONTEXT_H

#include <iosfwd>

#include "base/Export.h"
#include "base/VorString.h"
#include "containers/TAIndex.h"
#include "filenames/TAFileName.h"

/// One save of a tree of objects: the identifiers that it gives and the files that it writes.
///
/// Each kind of record has a file of lines in one directory.  UID stands for a decimal number, and
/// a line of one file names a line of another by it:
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
/// text or name goes out as it is, so what follows it looks like a line.
/// What a value contains is written before the line of its attribute, so identifiers grow depth
/// first.  An object that is reached twice is written twice; a save of one that contains
/// itself runs out of stack.
///
/// Every line goes to the system by one write as soon as it is complete.  Each level of the tree
/// takes a save about 600 bytes of stack.
///
/// Ownership: the streams belong to the context, which closes them at its end.
/// Errors:    none is reported: what cannot be opened or written is lost.  Running out of memory
///            ends the process.
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

  /// The stream of the file \a name.txt, which the first call for a name makes or empties.  Look at
  /// its state to see whether it could be opened.  Programs that the process starts do not inherit
  /// the file.
  std::fstream* GetStream(VorString name) noexcept;

 private:
  int _nextUid = 0;
  const TAFileName _directory;
  TAIndex _streams;   // from path without extension to std::fstream*, owned
  TAIndex _askedFor;  // the same streams from the names given, which saves making the path
};

#endif  // VOR_PERSISTENCE_TAPOBJECTSAVECONTEXT_H
