#ifndef VOR_CONTAINERS_TACOMPONENT_H
#define VOR_CONTAINERS_TACOMPONENT_H

#include "../base/Export.h"
#include "../base/VorString.h"
#include "VorHashRWMap.h"

class VorHashRWMapIteratorRef;
class VorListValVorString;
class VorMapIterator;

/// A named dictionary: maps texts to untyped pointers.
///
/// Ownership: copies the keys, never owns the values.
/// Errors:    a null key is never present; without memory, as VorHashSCMap.
/// Threads:   not synchronised; distinct components are independent.
class VOR_API TAComponent {
 public:
  /// An empty component with the name "".
  TAComponent();
  TAComponent(const TAComponent&) = delete;
  TAComponent& operator=(const TAComponent&) = delete;
  virtual ~TAComponent();

  void SetName(VorString name);
  const VorString& GetName() const;

  /// Adds a pair.  Returns 1 and changes nothing if the key is null or already present; otherwise
  /// returns 0, even if there was no memory for the pair.
  int Insert(const char* key, void* value);
  int Insert(const VorString& key, void* value);

  /// Removes the pair of \a key, if there is one.
  void Remove(const char* key);
  void Remove(const VorString& key);

  /// Removes all pairs.
  void Clear();

  /// 1 if \a key is present, else 0.
  int IsIn(const char* key);
  int IsIn(const VorString& key);

  /// The value of \a key; null if it is absent.
  void* GetValue(const char* key);
  void* GetValue(const VorString& key);

  /// The number of pairs.
  int GetSize();

  /// A new walk over all pairs, in the order of the map; the caller deletes it.  Null without
  /// memory.
  VorMapIterator* GetIterator();

  /// The same walk, owned by the component and valid until its next change; null without memory.
  VorHashRWMapIteratorRef* GetIteratorRef();

  /// Replaces \a keys by all keys in ascending strcmp order and returns their number.  Without
  /// memory for a walk, \a keys is empty, and DumpKeys writes nothing.
  int GetList(VorListValVorString& keys);

  /// Writes every key as a trace line, in the order of the map.
  void DumpKeys();

 private:
  VorString _name;
  VorHashRWMap _map;
};

#endif  // VOR_CONTAINERS_TACOMPONENT_H
