#ifndef VOR_TESTS_SUPPORT_NAIVEPREPRO_H
#define VOR_TESTS_SUPPORT_NAIVEPREPRO_H

/// Filters a NUL-terminated text like VorFilePrepro, byte by byte: the expected result in tests, a
/// peer in benchmarks.  \a out must have room for as many bytes as the text.
inline int NaivePrepro(const char* in, int flags, char* out) {
  enum { code, line, block, prepro, single, quoted } state = code;
  const bool keeps[] = {true,         !(flags & 1), !(flags & 2),
                        !(flags & 4), !(flags & 8), !(flags & 16)};
  for (; *in != '\0'; ++in) {
    const char c = *in, next = in[1];
    bool isPair = false;  // c and the next byte belong together
    auto owner = state;   // the state whose rule c follows
    switch (state) {
      case line:
        if (c == '\n') state = code;
        break;
      case block:
        isPair = c == '*' && next == '/';
        if (isPair) state = code;
        break;
      default:
        if (c == '\\' && next != '\0') {
          isPair = true;
        } else if (state != code) {
          if (c == (state == prepro ? '\n' : state == single ? '\'' : '"')) state = code;
        } else if (c == '/' || c == '"' || c == '\'' || c == '#') {
          isPair = c == '/' && (next == '/' || next == '*');
          if (isPair) state = next == '/' ? line : block;
          if (c != '/') state = c == '"' ? quoted : c == '#' ? prepro : single;
          owner = state;
        }
    }
    if (keeps[owner] || (c == '\n' && !isPair)) {
      *out++ = c;
      if (isPair) *out++ = next;
    }
    if (isPair) ++in;
  }
  *out = '\0';
  return state == code || state == prepro ? 0 : 2;
}

#endif  // VOR_TESTS_SUPPORT_NAIVEPREPRO_H
