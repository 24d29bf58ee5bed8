#include "containers/VorStringPool.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <climits>
#include <cstddef>

namespace {

constexpr int kBlockRoom = 65532;  // bytes of a block for runs, without its link

}  // namespace

struct VorStringPool::Block {
  Block* previous;
  char bytes[kBlockRoom];
};

VorStringPool::~VorStringPool() {
  clear();
}

// The messages have no newline; programs that read this output rely on it.

char* VorStringPool::alloc(int n) {
  if (n > kBlockRoom || n < 0) {
    printf("# Error : unable to allocate in VorStringPoolAlloc (string too long: %d)", n);
    return nullptr;
  }
  if (_current == nullptr || n > _remaining) {
    auto* block = static_cast<Block*>(malloc(sizeof(Block)));
    if (block == nullptr) {
      printf("# Error : unable to allocate in VorStringPoolAlloc (not enough memory): %d", 65536);
      return nullptr;
    }
    block->previous = _current;
    _current = block;
    _remaining = kBlockRoom;
  }
  char* run = _current->bytes + (kBlockRoom - _remaining);
  _remaining -= n;
  return run;
}

char* VorStringPool::create(const char* s) {
  if (s == nullptr) return nullptr;
  const std::size_t length = strlen(s);
  char* copy = alloc(length < INT_MAX ? static_cast<int>(length) + 1 : INT_MAX);
  if (copy == nullptr) {
    printf("# Error : unable to create string in VorStringPoolCreate: %s", s);
    return nullptr;
  }
  memcpy(copy, s, length + 1);
  return copy;
}

void VorStringPool::clear() {
  while (_current != nullptr) {
    Block* previous = _current->previous;
    free(_current);
    _current = previous;
  }
  _remaining = 0;
}
