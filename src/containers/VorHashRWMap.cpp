#include "containers/VorHashRWMap.h"

#include <new>

#include "containers/VorHashRWMapIteratorRef.h"

VorHashRWMap::~VorHashRWMap() {
  delete _iterator;
}

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
    return _iterator;
  }
  delete _iterator;
  _iterator = new (std::nothrow) VorHashRWMapIteratorRef(getSize());
  if (_iterator != nullptr && _iterator->GetRoom() < getSize()) {
    delete _iterator;
    _iterator = nullptr;
  }
  _modified = _iterator == nullptr;
  if (_iterator != nullptr) FillIterator(*_iterator);
  return _iterator;
}
