#ifndef VOR_PERSISTENCE_TAPPATH_H
#define VOR_PERSISTENCE_TAPPATH_H

#include <vector>

#include "base/Export.h"
#include "containers/TARefCounter.h"
#include "persistence/TAPName.h"

/// Where an object stands in a tree: the names of the attributes that lead to it from the root.
/// A path never changes and has at least one name.
///
/// Positions are 1-based: 1 to Size().
///
/// Ownership: holds one reference on each name; shared as TARefCounter says.
/// Errors:    a position outside the path ends the process with FATAL; so does running out of
///            memory.  The pointers given to a constructor are not null.
/// Threads:   as TARefCounter; the names of a copied or longer path are shared with the shorter.
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
  int Size() const { return static_cast<int>(_names.size()); }

  /// The name at a 1-based position, with one more reference, which the caller releases.
  TAPName* operator[](int position) const;

 private:
  std::vector<TAPName*> _names;
};

#endif  // VOR_PERSISTENCE_TAPPATH_H
