#include "InputFile.h"

#include <errno.h>
#include <string.h>

#include <filesystem>

namespace campaign {

std::string OpenInput(const std::string& path, std::ifstream* file) {
  std::error_code ignored;
  const bool isDirectory = std::filesystem::is_directory(path, ignored);
  if (!isDirectory) file->open(path);
  if (file->is_open()) return "";
  return "cannot read " + path + ": " + strerror(isDirectory ? EISDIR : errno);
}

}  // namespace campaign
