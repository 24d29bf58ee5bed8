#ifndef VOR_BASE_VORVERSION_H
#define VOR_BASE_VORVERSION_H

#include "Export.h"

/// The version of these headers, as numbers for #if.  Releases of one major version are compatible:
/// a tool built against one runs with every later one.
#define VOR_VERSION_MAJOR 1
#define VOR_VERSION_MINOR 0
#define VOR_VERSION_PATCH 0

/// The version of the library that the tool runs with, as "1.0.0".  It may be later than the
/// headers that the tool was compiled with.  Threads: may be called from any thread.
VOR_API const char* VorVersion();

#endif  // VOR_BASE_VORVERSION_H
