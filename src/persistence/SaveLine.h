#ifndef VOR_PERSISTENCE_SAVELINE_H
#define VOR_PERSISTENCE_SAVELINE_H

#include <charconv>
#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>

namespace vor {

/// One line of a saved file, built in memory so that one write sends it to the file.
class SaveLine {
 public:
  explicit SaveLine(int uid) {
    _text.reserve(kUsualSize);
    *this << uid << ":";
  }

  /// In decimal, whatever the locale.
  SaveLine& operator<<(int number) {
    char digits[16];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, number);
    _text.append(digits, end.ptr);
    return *this;
  }
  /// As it stands: nothing is escaped.
  SaveLine& operator<<(std::string_view text) {
    _text += text;
    return *this;
  }

  /// Ends the line and writes it to the system.  Errors stay in the state of \a file.
  void WriteTo(std::fstream& file) {
    _text += '\n';
    file.write(_text.data(), static_cast<std::streamsize>(_text.size())).flush();
  }

 private:
  static constexpr std::size_t kUsualSize = 120;

  std::string _text;
};

}  // namespace vor

#endif  // VOR_PERSISTENCE_SAVELINE_H
