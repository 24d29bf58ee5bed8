// The text and file utilities that need a TAFileName or a directory read.  Their declarations are
// in the headers of src/foundation.

#include <string_view>

#include "base/VorFCopy.h"
#include "base/VorListValVorString.h"
#include "base/VorUnicodeString.h"
#include "filenames/DirectoryReading.h"
#include "filenames/TAFileName.h"
#include "foundation/FieldScan.h"
#include "foundation/FileUtilities.h"
#include "foundation/TextUtilities.h"

int CompareTAStrings(TAFileName* left, TAFileName* right) {
  return TAFileName::Compare(left, right);
}

int CopyFile(const TAFileName& from, const TAFileName& to) noexcept {
  if (from.IsFile() == 0) return 1;
  return VorFCopy(VorUnicodeString(from), VorUnicodeString(to), 1) < 0;
}

TAFileName SearchConcatenation(const VorString& name, const VorString& searchPath) noexcept {
  vor::FieldScan scan(searchPath.View(), ":");
  std::string_view directory;
  while (scan.Next(&directory)) {
    TAFileName candidate = TAFileName(VorString(directory)) + name;
    if (candidate.IsFile() != 0) return candidate;
  }
  return TAFileName();
}

int FileSelectionSize(const VorString& pattern) noexcept {
  VorListValVorString selected;
  ReadDirectory(pattern, selected);
  return selected.Size();
}
