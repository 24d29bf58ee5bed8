#include "InputFile.h"

#include <errno.h>
#include <string.h>

#include <filesystem>

namespace campaign {

std::string OpenInput(const std::string& path, std::ifstream* file) {
  std::error_code ignored;
  const bool isFolder = std::filesystem::is_directory(path, ignored);
  if (!isFolder) file->open(path);
  if (file->is_open()) return "";
  return "cannot read " + path + ": " + strerror(isFolder ? EISDIR : errno);
}

}  // namespace campaign
