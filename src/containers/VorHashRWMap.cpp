#include "containers/VorHashRWMap.h"

#include <new>

#include "containers/VorHashRWMapIteratorRef.h"

VorHashRWMap::VorHashRWMap(VorStringPool* pool) : VorHashSCMap(pool) {}

VorHashRWMap::VorHashRWMap(int size, float loadFactor, VorStringPool* pool)
    : VorHashSCMap(size, loadFactor, pool) {}

VorHashRWMap::~VorHashRWMap() = default;

const char* VorHashRWMap::insert(const char* key, void* value) {
  _modified = true;
  return VorHashSCMap::insert(key, value);
}

void VorHashRWMap::remove(const char* key) {
  _modified = true;
  VorHashSCMap::remove(key);
}

void VorHashRWMap::clear() {
  _modified = true;
  VorHashSCMap::clear();
}

VorHashRWMapIteratorRef* VorHashRWMap::getIteratorRef() {
  if (!_modified && _iterator != nullptr) {
    _iterator->RewindIterator();
    return _iterator.get();
  }
  _iterator.reset();  // its memory first
  _iterator.reset(new (std::nothrow) VorHashRWMapIteratorRef(getSize()));
  if (_iterator != nullptr && _iterator->GetRoom() < getSize()) _iterator.reset();
  _modified = _iterator == nullptr;
  if (_iterator != nullptr) FillIterator(*_iterator);
  return _iterator.get();
}
