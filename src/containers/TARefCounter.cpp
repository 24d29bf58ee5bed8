#include "containers/TARefCounter.h"

#include "foundation/Tracing.h"

void TARefCounter::Release() {
  FATAL(_count < 1, "Too many release on object");
  if (_count == 1) {
    delete this;  // its reference is still counted: the destructor expects exactly one
  } else {
    --_count;
  }
}

TARefCounter::~TARefCounter() {
  FATAL(_count != 1, "Delete on referenced object");
  // Makes it likely that a later release of the deleted object is detected.  The compiler would
  // remove a plain store, because no valid code can read it.
  const_cast<volatile int&>(_count) = 0;
}
