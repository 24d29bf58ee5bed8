#ifndef VOR_CONTAINERS_TAREFCOUNTER_H
#define VOR_CONTAINERS_TAREFCOUNTER_H

#include "../base/Export.h"
#include "../base/VorListPtr.h"

/// Base class of objects that several owners share: a count of references that deletes the object
/// when the last one is released.
///
/// The creator holds the first reference.  Each further owner calls AddRef once, and Release once
/// when done.  The holder of the only reference may also delete the object, and an object on the
/// stack is destroyed at the end of its scope.
///
/// Ownership: the object belongs to all holders of references.
/// Errors:    misuse ends the process with FATAL: a release without a reference, and the
///            destruction of an object that others still reference.
/// Threads:   the count is a plain integer; references to one object are taken and released by one
///            thread at a time.
class VOR_API TARefCounter {
 public:
  TARefCounter() = default;
  TARefCounter(const TARefCounter&) = delete;
  TARefCounter& operator=(const TARefCounter&) = delete;

  /// Takes a reference.
  void AddRef() { ++_count; }

  /// Releases a reference; the last release deletes the object.
  void Release();

  virtual ~TARefCounter();

 private:
  int _count = 1;  // references held
};

/// A list of pointers to shared objects.  It neither owns them nor holds references.
class VOR_API VorListPtrTARefCounter : public VorListPtr<TARefCounter> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_CONTAINERS_TAREFCOUNTER_H
