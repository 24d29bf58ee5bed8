#include "base/VorVersion.h"

#define VOR_TEXT_OF(number) #number
#define VOR_VERSION_TEXT(major, minor, patch) \
  VOR_TEXT_OF(major) "." VOR_TEXT_OF(minor) "." VOR_TEXT_OF(patch)

const char* VorVersion() {
  return VOR_VERSION_TEXT(VOR_VERSION_MAJOR, VOR_VERSION_MINOR, VOR_VERSION_PATCH);
}
