#ifndef VOR_BASE_ASCIICASE_H
#define VOR_BASE_ASCIICASE_H

namespace vor {

/// Upper-cases the letters a to z; every other byte stays, whatever the locale.
constexpr char AsciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace vor

#endif  // VOR_BASE_ASCIICASE_H
