#ifndef VOR_SOURCEFILES_XMLFILEDESCRIPTION_H
#define VOR_SOURCEFILES_XMLFILEDESCRIPTION_H

#include "base/Export.h"
#include "filenames/TAFileName.h"
#include "sourcefiles/VorXMLNode.h"
#include "sourcefiles/VorXMLNodeListener.h"

// Paths of the file system as XML elements, for tools that put files into XML documents.
//
// A description is made once, from what the path is at that moment: an element "File", "FileRW" or
// "Directory" with the attributes "Name" (basename(1) of the path) and "Path" (the path as
// given).  It never changes by itself: its listener only detaches itself at the first notification,
// and refreshing it does nothing.
//
// Running out of memory ends the process.  Threads: every function may be called from any thread,
// with a path that is no copy of another thread's (see TAFileName).

/// The listener of files.  It detaches itself from the node that notifies it.
class VOR_API FileDescriptionListener final : public VorXMLNodeListener {
 public:
  void Notify(VorXMLNode& node) override;
};

/// The same for directories.
class VOR_API DirectoryDescriptionListener final : public VorXMLNodeListener {
 public:
  void Notify(VorXMLNode& node) override;
};

/// The same for directories described by GetFileDescriptionRW.
class VOR_API DirectoryDescriptionListenerRW final : public VorXMLNodeListener {
 public:
  void Notify(VorXMLNode& node) override;
};

// Shared by all descriptions; without data, so threads may share them.
VOR_API extern FileDescriptionListener _fileListener;
VOR_API extern DirectoryDescriptionListener _directoryListener;
VOR_API extern DirectoryDescriptionListenerRW _directoryListenerRW;

/// An element "File" for a file and "Directory" for a directory, as IsFile and IsDirectory of
/// TAFileName tell; else, when the path does not exist for instance, the empty node.
VOR_API VorXMLNode GetFileDescription(TAFileName path) noexcept;

/// The same, except that a file that the process's real user may both read and write, as access()
/// tells, is an element "FileRW".
VOR_API VorXMLNode GetFileDescriptionRW(TAFileName path) noexcept;

/// Does nothing: a description stays as it was made.
VOR_API void RefreshFileDescription(VorXMLNode& node);
VOR_API void RefreshFileDescriptionRW(VorXMLNode& node);

#endif  // VOR_SOURCEFILES_XMLFILEDESCRIPTION_H
