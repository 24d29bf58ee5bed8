#ifndef VOR_TESTS_SUPPORT_TEMPDIR_H
#define VOR_TESTS_SUPPORT_TEMPDIR_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

/// A temporary directory that is removed with everything in it, even after a failed test.
class TempDir {
 public:
  TempDir() {
    std::string pattern = std::filesystem::temp_directory_path() / "vor_test_XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) abort();
    _path = std::filesystem::canonical(pattern);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
  }

  std::string Path() const { return _path; }
  std::string operator/(std::string_view name) const { return _path / name; }

  /// Writes a file, creates the directories above it, and returns its path.
  std::string Write(std::string_view name, std::string_view content) const {
    const std::filesystem::path file = _path / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
  }

  std::string Read(std::string_view name) const {
    std::ifstream file(_path / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path _path;
};

#endif  // VOR_TESTS_SUPPORT_TEMPDIR_H
