#include "containers/VorHashRWMapIteratorRef.h"

void VorHashRWMapIteratorRef::RewindIterator() {
  _position = -1;
}
