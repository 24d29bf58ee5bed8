#ifndef VOR_PERSISTENCE_TAPPATH_H
#define VOR_PERSISTENCE_TAPPATH_H

#include "../base/Export.h"
#include "../containers/TARefCounter.h"
#include "TAPName.h"

/// The place of an object in a tree: the names of the attributes that lead to it from the root.
/// A path never changes and has at least one name.
///
/// Positions are 1-based: 1 to Size().  A path that is made from another shares its names with it,
/// so it takes the same small amount of memory whatever its length.
///
/// Ownership: holds one reference on each name; shared as TARefCounter describes.
/// Errors:    a position outside the path ends the process with FATAL; so does running out of
///            memory.  The pointers passed to a constructor must not be null.
/// Threads:   as TARefCounter; a path and those made from it belong to one thread at a time.
class VOR_API TAPPath : public TARefCounter {
 public:
  /// A path of one name.
  explicit TAPPath(TAPName* name) noexcept;
  TAPPath(const TAPPath& other) noexcept;
  /// The names of \a parent followed by \a name.
  TAPPath(const TAPPath* parent, TAPName* name) noexcept;
  TAPPath& operator=(const TAPPath&) = delete;
  ~TAPPath() override;

  /// The number of names.
  int Size() const { return _size; }

  /// The name at a 1-based position, with one more reference, which the caller releases.
  TAPName* operator[](int position) const;

 private:
  struct Step;

  int _size;
  Step* _last;  // one reference held
};

#endif  // VOR_PERSISTENCE_TAPPATH_H
