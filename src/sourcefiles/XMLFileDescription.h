#ifndef VOR_SOURCEFILES_XMLFILEDESCRIPTION_H
#define VOR_SOURCEFILES_XMLFILEDESCRIPTION_H

#include "../base/Export.h"
#include "../filenames/TAFileName.h"
#include "VorXMLNode.h"
#include "VorXMLNodeListener.h"

// Paths of the file system as XML elements, for tools that put files into XML documents.
//
// A description shows the kind of the path at the time of the call: an element "File", "FileRW" or
// "Directory" with the attributes "Name" (basename(1) of the path) and "Path" (the path as given).
// It never changes by itself.  Its listener detaches itself at the first notification and does
// nothing else; the refresh functions do nothing.
//
// Running out of memory ends the process.
// Threads: every function may be called from any thread.

/// The listener of files.  It detaches itself from a node at the first notification.
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

// Shared by all descriptions and all threads; they hold no data.
VOR_API extern FileDescriptionListener _fileListener;
VOR_API extern DirectoryDescriptionListener _directoryListener;
VOR_API extern DirectoryDescriptionListenerRW _directoryListenerRW;

/// An element "File" if IsFile of TAFileName holds, "Directory" if IsDirectory does; otherwise, for
/// example if the path does not exist, the empty node.
VOR_API VorXMLNode GetFileDescription(TAFileName path) noexcept;

/// The same, except that a file which the real user of the process may read and write (by access())
/// is an element "FileRW".
VOR_API VorXMLNode GetFileDescriptionRW(TAFileName path) noexcept;

/// Do nothing: a description never changes.
VOR_API void RefreshFileDescription(VorXMLNode& node);
VOR_API void RefreshFileDescriptionRW(VorXMLNode& node);

#endif  // VOR_SOURCEFILES_XMLFILEDESCRIPTION_H
