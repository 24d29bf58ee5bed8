#ifndef VOR_BASE_OWNEDTEXT_H
#define VOR_BASE_OWNEDTEXT_H

#include <stdlib.h>

#include <memory>

namespace vor {

struct FreeDeleter {
  void operator()(char* text) const { free(text); }
};

/// A text from malloc that is freed when its owner goes away.
using OwnedText = std::unique_ptr<char, FreeDeleter>;

}  // namespace vor

#endif  // VOR_BASE_OWNEDTEXT_H
