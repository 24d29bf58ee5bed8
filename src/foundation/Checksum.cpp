#include "foundation/Checksum.h"

#include <string.h>

#include "foundation/CrcFolding.h"
#include "foundation/CrcTables.h"

unsigned int crc(const char* text, unsigned int seed) {
  const std::size_t size = strlen(text);
  const auto* data = reinterpret_cast<const unsigned char*>(text);
  const bool folds = size >= vor::kCrcFoldMinimum && vor::CrcCanFold();
  const std::uint32_t remainder =
      folds ? vor::CrcByFolding(data, size) : vor::CrcByTables(0, data, size);
  // The bits of the seed come last: they are below the degree of the polynomial and only added.
  return remainder ^ seed;
}
