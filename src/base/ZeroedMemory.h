#ifndef VOR_BASE_ZEROEDMEMORY_H
#define VOR_BASE_ZEROEDMEMORY_H

#include <cstddef>

namespace vor {

/// \a size bytes that are zero, to be released with free(); null if there is no memory.  A large
/// table is put on large pages where the system has them to give, which makes scattered accesses
/// cheaper.
void* AllocateZeroed(std::size_t size);

}  // namespace vor

#endif  // VOR_BASE_ZEROEDMEMORY_H
