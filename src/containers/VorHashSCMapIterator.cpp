#include "containers/VorHashSCMapIterator.h"

#include <stdio.h>
#include <stdlib.h>

#include <cstddef>

VorHashSCMapIterator::VorHashSCMapIterator(int size)
    : _size(size > 0 ? size : 0), _keys(nullptr), _values(nullptr) {
  if (_size == 0) return;
  // calloc: getKey of a pair that was never inserted is null.
  _keys = static_cast<const char**>(calloc(static_cast<std::size_t>(_size), sizeof *_keys));
  _values = static_cast<void**>(calloc(static_cast<std::size_t>(_size), sizeof *_values));
  if (_keys == nullptr || _values == nullptr) _size = 0;
}

VorHashSCMapIterator::~VorHashSCMapIterator() {
  free(_keys);
  free(_values);
}

int VorHashSCMapIterator::next() {
  if (_position < _size) ++_position;  // stays after the last, however often it is called
  return _position < _size;
}

const char* VorHashSCMapIterator::getKey() {
  return _keys[_position];
}

void* VorHashSCMapIterator::getValue() {
  return _values[_position];
}

void VorHashSCMapIterator::insert(const char* key, void* value) {
  if (_size <= _inserted) {
    // The message begins with a blank; log filters match it.
    printf(" VorHashSCMapIterator::insert, _size too small: %d\n", _size);
    return;
  }
  _keys[_inserted] = key;
  _values[_inserted] = value;
  ++_inserted;
}
