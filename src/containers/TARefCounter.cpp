#include "containers/TARefCounter.h"

#include "foundation/Tracing.h"

void TARefCounter::Release() {
  FATAL(_count < 1, "Too many release on object");
  if (_count == 1) {
    delete this;  // with its reference still counted: the destructor looks for exactly one
  } else {
    --_count;
  }
}

TARefCounter::~TARefCounter() {
  FATAL(_count != 1, "Delete on referenced object");
  // A release of the dead object is likely to be noticed.  A plain store would be left out, as the
  // compiler knows that nobody may read it.
  const_cast<volatile int&>(_count) = 0;
}
