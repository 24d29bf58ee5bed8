#ifndef VOR_PERSISTENCE_TAPOBJECT_H
#define VOR_PERSISTENCE_TAPOBJECT_H

#include "../base/Export.h"
#include "../containers/TAIndex.h"
#include "../containers/TARefCounter.h"
#include "../filenames/TAFileName.h"
#include "Owners.h"
#include "TAPAttr.h"
#include "TAPPath.h"

class TAPObjectSaveContext;

/// A set of named values.  Objects form a tree: a value may be another object.  An object that
/// becomes a value of another gets its path from the root.
///
/// Names are kept in strcmp order.  To walk the attributes:
///
///     for (int p = object->GetFirstAttributePosition(); p != 0;) {
///       TAPAttr value = object->GetNextAttribute(p);
///     }
///
/// Ownership: shared as TARefCounter describes; owns its values and holds one reference on its
///            path.  An object that contains itself, directly or not, is never deleted.
/// Errors:    operations that can fail return 1 and change nothing.  A null name is never found,
///            and setting it does nothing.  Running out of memory ends the process.
/// Limits:    a tree may have any depth.  Its paths take memory in proportion to the number of its
///            objects.  Only saving has a limit, see TAPObjectSaveContext.
/// Threads:   as TARefCounter: a tree belongs to one thread at a time.
class VOR_API TAPObject : public TARefCounter {
 public:
  /// No attributes and no path.
  TAPObject() = default;
  ~TAPObject() override;

  /// Replaces the path and holds one more reference on it; null for none.
  void SetPath(TAPPath* path);
  /// The path with one more reference, which the caller releases; null if there is no path.
  TAPPath* GetPath() const;

  /// 1 if there is such an attribute, else 0.
  int HasAttribute(const char* name) const;
  /// The same for the name made of the first \a length bytes of \a name.
  int HasAttribute(const char* name, int length) const;

  /// Returns 0, or 1 if there is no such attribute.
  int RemoveAttribute(const char* name);

  /// Adds the attribute or replaces its value.  If the value is an object, its path becomes the
  /// path of this object followed by \a name; the objects in it keep their paths.
  void SetAttribute(const char* name, TAPAttr value) noexcept;

  /// A copy of the value; TAPAttr::Null if there is no such attribute.
  TAPAttr GetAttribute(const char* name) const;

  /// Adds to the value of an attribute: any value to a list, a text to a text, a number to a number
  /// (which wraps).  A missing attribute becomes an empty list first.  A text grows in place, so
  /// many small pieces take time in proportion to their length.
  ///
  /// Returns 0, or 1 if the attribute is of another type.  Ends the process with FATAL if the
  /// attribute is a text or a number and \a value is not.
  int AppendToAttribute(const char* name, TAPAttr value) noexcept;

  /// The attributes, each with its TAPAttr*, which this object owns.
  TAIndex& GetAttributeList() { return _attributes; }

  /// The position at which a walk starts: 1, or 0 if there are no attributes.
  int GetFirstAttributePosition() const;
  /// A copy of the value at the 1-based \a position, which then moves to the next attribute, or
  /// becomes 0 after the last.  If there is no attribute at \a position, the result is
  /// TAPAttr::Null and \a position becomes 0.
  TAPAttr GetNextAttribute(int& position) const;
  /// The same with the name, which stays valid until the attribute is removed; null if none.
  TAPAttr GetNextAttribute(int& position, const char*& name) const;

  /// Walks from object to object along the names of \a path and returns null in every case; callers
  /// rely on that.  A complete walk adds one reference to the last object, which a caller who knows
  /// that object may release.  An incomplete walk adds none.
  TAPObject* GetObject(TAPPath* path);

  /// Saves the tree under this object to files in \a directory, as TAPObjectSaveContext describes.
  /// This object gets the identifier 0.  Always returns 0: lines that cannot be written are lost
  /// without a message.
  int SaveToFile(TAFileName directory) const noexcept;
  /// The same with the identifier \a uid, as part of the save \a context.
  int SaveToFile(int uid, TAPObjectSaveContext& context) const noexcept;

 private:
  const TAPAttr* Find(const char* name) const;

  TAIndex _attributes;  // TAPAttr*, owned
  vor::Reference<TAPPath> _path;
};

#endif  // VOR_PERSISTENCE_TAPOBJECT_H
