#ifndef VOR_PERSISTENCE_TAPNAME_H
#define VOR_PERSISTENCE_TAPNAME_H

#include "../base/Export.h"
#include "../base/VorString.h"
#include "../containers/TARefCounter.h"

/// The name of an attribute as one step of a TAPPath; paths share their names.
///
/// Ownership: keeps a copy of the text; shared as TARefCounter describes.
/// Threads:   as TARefCounter.
class VOR_API TAPName : public TARefCounter {
 public:
  /// A null text counts as "".
  explicit TAPName(const char* name) noexcept : _name(name) {}

  /// Valid for as long as the name lives.
  const char* GetName() const { return _name; }

 private:
  const VorString _name;
};

#endif  // VOR_PERSISTENCE_TAPNAME_H
