#ifndef VOR_BASE_ZEROEDMEMORY_H
#define VOR_BASE_ZEROEDMEMORY_H

#include <cstddef>

namespace vor {

/// \a size bytes that are zero, to be released with free(); null if there is no memory.  A large
/// table gets large pages where the system has them, so that scattered accesses find their pages.
void* AllocateZeroed(std::size_t size);

}  // namespace vor

#endif  // VOR_BASE_ZEROEDMEMORY_H
