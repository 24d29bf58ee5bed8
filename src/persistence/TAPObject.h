#ifndef VOR_PERSISTENCE_TAPOBJECT_H
#define VOR_PERSISTENCE_TAPOBJECT_H

#include "base/Export.h"
#include "containers/TAIndex.h"
#include "containers/TARefCounter.h"
#include "filenames/TAFileName.h"
#include "persistence/TAPAttr.h"
#include "persistence/TAPPath.h"

class TAPObjectSaveContext;

/// A set of named values.  A value that is another object makes a tree, and an object that is put
/// under a name in another learns its path from the root.
///
/// Names are kept in strcmp order.  To walk the attributes:
///
///     for (int p = object->GetFirstAttributePosition(); p != 0;) {
///       TAPAttr value = object->GetNextAttribute(p);
///     }
///
/// Ownership: shared as TARefCounter says; owns its values and holds one reference on its path.  An
///            object that contains itself, directly or not, is never deleted.
/// Errors:    operations that can fail return 1 and change nothing.  A null name is no attribute's:
///            it is never found, and setting it does nothing.  Running out of memory ends the
///            process.
/// Threads:   as TARefCounter: a tree belongs to one thread at a time.
class VOR_API TAPObject : public TARefCounter {
 public:
  /// No attributes and no path.
  TAPObject() = default;
  ~TAPObject() override;

  /// Holds \a path instead of the one before; null for none.
  void SetPath(TAPPath* path);
  /// The path with one more reference, which the caller releases; null without a path.
  TAPPath* GetPath() const;

  /// 1 if the attribute is there, else 0.
  int HasAttribute(const char* name) const;
  /// The same for the name made of the first \a length bytes of \a name.
  int HasAttribute(const char* name, int length) const;

  /// Returns 0, or 1 if there is no such attribute.
  int RemoveAttribute(const char* name);

  /// Adds the attribute or replaces its value.  An object gets the path of this one followed by
  /// \a name, also where it has a path already; what it contains keeps the paths it has.
  void SetAttribute(const char* name, TAPAttr value) noexcept;

  /// A copy of the value; TAPAttr::Null if there is no such attribute.
  TAPAttr GetAttribute(const char* name) const;

  /// Adds to the value of an attribute: appends to a list, a text to a text, a number to a number
  /// (which wraps).  An attribute that is not there becomes a list first.  Returns 0, or 1 for an
  /// attribute of another type.  Adding to a text or number what is none ends the process.
  int AppendToAttribute(const char* name, TAPAttr value) noexcept;

  /// The attributes, each with its TAPAttr*, which this object owns.
  TAIndex& GetAttributeList() { return _attributes; }

  /// Where a walk starts: 1, or 0 if there are no attributes.
  int GetFirstAttributePosition() const;
  /// A copy of the value at a 1-based position, which moves on by one, or becomes 0 behind the last
  /// attribute.  A position that is no attribute's gives TAPAttr::Null and becomes 0.
  TAPAttr GetNextAttribute(int& position) const;
  /// The same with the name, which stays valid until the attribute is removed; null if none.
  TAPAttr GetNextAttribute(int& position, const char*& name) const;

  /// Walks from object to object along the names of \a path and gives null in every case: callers
  /// rely on that.  The object that a complete walk ends at keeps one more reference, which a
  /// caller that knows it may release; a walk that ends before leaves none behind.
  TAPObject* GetObject(TAPPath* path);

  /// Saves the tree under this object, which gets the identifier 0, to files in \a directory as
  /// TAPObjectSaveContext says.  Returns 0: what cannot be written is lost without a word.
  int SaveToFile(TAFileName directory) const noexcept;
  /// The same as part of a save that has begun, under the identifier \a uid.
  int SaveToFile(int uid, TAPObjectSaveContext& context) const noexcept;

 private:
  const TAPAttr* Find(const char* name) const;

  TAIndex _attributes;       // TAPAttr*, owned
  TAPPath* _path = nullptr;  // one reference held, or null
};

#endif  // VOR_PERSISTENCE_TAPOBJECT_H
