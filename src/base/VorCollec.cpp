#include "base/VorCollec.h"

#include <stdio.h>
#include <stdlib.h>

void VorCollec::ReportBadPosition(long long position, std::size_t size) {
  fprintf(stderr, "List position %lld is outside 1..%zu\n", position, size);
  abort();
}
