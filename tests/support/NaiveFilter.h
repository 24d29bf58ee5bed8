#ifndef VOR_TESTS_SUPPORT_NAIVEFILTER_H
#define VOR_TESTS_SUPPORT_NAIVEFILTER_H

#include <cstddef>

/// Byte by byte, what VorFilePrepro does: judge in tests, peer in benchmarks.  \a out has room for
/// \a size bytes and a NUL.
inline int NaiveFilter(const char* in, std::size_t size, int flags, char* out) {
  enum { code, block, line, prepro, doubleQuoted, singleQuoted } state = code;
  const bool keeps[] = {true,
                        (flags & 2) == 0,
                        (flags & 1) == 0,
                        (flags & 4) == 0,
                        (flags & 16) == 0,
                        (flags & 8) == 0};
  for (std::size_t i = 0; i < size; ++i) {
    const char c = in[i];
    const bool hasNext = i + 1 < size;
    const char next = hasNext ? in[i + 1] : '\0';
    const auto place = state;  // c is written by the rule of the place where it stands
    int pair = 0;              // 1 if c and the next one belong together
    auto owner = place;        // whose rule it is, if c begins something
    if (place == block) {
      if (c == '*' && next == '/') pair = 1, state = code;
    } else if (place == line) {
      if (c == '\n') state = code;
    } else if (c == '\\' && hasNext) {
      pair = 1;
    } else if (place == prepro) {
      if (c == '\n') state = code;
    } else if (place == doubleQuoted) {
      if (c == '"') state = code;
    } else if (place == singleQuoted) {
      if (c == '\'') state = code;
    } else {
      if (c == '/' && (next == '*' || next == '/')) pair = 1, state = next == '*' ? block : line;
      if (c == '"') state = doubleQuoted;
      if (c == '\'') state = singleQuoted;
      if (c == '#') state = prepro;
      owner = state;
    }
    if (keeps[owner] || (c == '\n' && pair == 0)) {
      *out++ = c;
      if (pair != 0) *out++ = next;
    }
    i += static_cast<std::size_t>(pair);
  }
  *out = '\0';
  return state == code || state == prepro ? 0 : 2;
}

#endif  // VOR_TESTS_SUPPORT_NAIVEFILTER_H
