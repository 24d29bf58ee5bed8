#ifndef VOR_BASE_ZEROEDMEMORY_H
#define VOR_BASE_ZEROEDMEMORY_H

#include <cstddef>

namespace vor {

/// Returns \a size zero bytes, which the caller releases with free(); null if there is no memory.
/// Large tables are placed on huge pages if the system offers them, because random accesses are
/// cheaper there.
void* AllocateZeroed(std::size_t size);

}  // namespace vor

#endif  // VOR_BASE_ZEROEDMEMORY_H
