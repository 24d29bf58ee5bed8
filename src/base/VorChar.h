#ifndef VOR_BASE_VORCHAR_H
#define VOR_BASE_VORCHAR_H

#include "Export.h"

/// One 8-bit character as a value of its own type.
///
/// Threads: a plain value.
class VOR_API VorChar {
 public:
  constexpr VorChar(char value = '\0') : _value(value) {}

  constexpr operator char() const { return _value; }

 private:
  char _value;
};

#endif  // VOR_BASE_VORCHAR_H
