#include "base/IndexCheck.h"

#include <stdio.h>
#include <stdlib.h>

namespace vor {

void ReportBadPosition(long long position, std::size_t size) {
  fprintf(stderr, "List position %lld is outside 1..%zu\n", position, size);
  abort();
}

}  // namespace vor
