#ifndef VOR_BASE_OWNEDTEXT_H
#define VOR_BASE_OWNEDTEXT_H

#include <stdlib.h>

#include <memory>

namespace vor {

struct FreeDeleter {
  void operator()(char* text) const { free(text); }
};

/// Owns a text that was allocated with malloc.
using OwnedText = std::unique_ptr<char, FreeDeleter>;

}  // namespace vor

#endif  // VOR_BASE_OWNEDTEXT_H
