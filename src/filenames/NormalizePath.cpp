#include "filenames/NormalizePath.h"

#include <string.h>

#include <algorithm>

// The rules delete pieces of the text again and again while they scan it.  Each pass below does
// all deletions of one rule in one walk: `in` reads, `out` writes behind it, and text[0..out) is
// at any time what the rule has left of text[0..in).

namespace vor {
namespace {

bool IsParentStep(const char* text, std::size_t in, std::size_t length) {
  return in + 2 < length && text[in] == '/' && text[in + 1] == '.' && text[in + 2] == '.' &&
         (in + 3 == length || text[in + 3] == '/');
}

bool IsCurrentStep(const char* text, std::size_t in, std::size_t length) {
  return in + 2 < length && text[in] == '/' && text[in + 1] == '.' && text[in + 2] == '/';
}

// True for most paths: no rule finds anything to do.
bool IsNormal(const char* text, std::size_t length) {
  if (text[0] == '.' && text[1] == '/') return false;
  for (std::size_t i = 0; i < length; ++i) {
    if (text[i] == '\\') return false;
    if (text[i] != '/') continue;
    const char next = text[i + 1];
    if (next == '/' || next == '.' || next == '\0') return false;
  }
  return true;
}

// Of each pair of slashes the second stays, and the walk goes on behind it: a run of k slashes
// becomes one of (k + 1) / 2.  Callers compare names that were folded so, hence no further.
std::size_t FoldSlashPairs(char* text, std::size_t length) {
  std::size_t out = 0;
  for (std::size_t in = 0; in < length; ++in) {
    if (text[in] == '/' && in + 1 < length && text[in + 1] == '/') ++in;
    text[out++] = text[in];
  }
  return out;
}

std::size_t FoldCurrentSteps(char* text, std::size_t length) {
  std::size_t out = 0;
  std::size_t in = 0;
  while (in < length) {
    if (IsCurrentStep(text, in, length)) {
      in += 2;
    } else {
      text[out++] = text[in++];
    }
  }
  return out;
}

std::size_t CutCurrentDirectoryAtEnds(char* text, std::size_t length) {
  if (length <= 2) return length;
  if (text[length - 2] == '/' && text[length - 1] == '.') length -= 2;
  if (length >= 2 && text[0] == '.' && text[1] == '/') {
    length -= 2;
    memmove(text, text + 2, length);
  }
  return length;
}

// Where the last component of text[0..end) starts.
std::size_t LastComponent(const char* text, std::size_t end) {
  while (end > 0 && text[end - 1] != '/') --end;
  return end;
}

// A component that is removed is looked at once, and one of dots only, which stays, hides behind
// the ".." that is kept after it: no byte is visited by two backward looks.
std::size_t FoldParentSteps(char* text, std::size_t length) {
  std::size_t out = 0;
  std::size_t in = 0;
  while (in < length) {
    // A ".." step at the very start has nothing to remove.
    if (out == 0 || !IsParentStep(text, in, length)) {
      text[out++] = text[in++];
      continue;
    }
    const std::size_t start = LastComponent(text, out);
    if (std::all_of(text + start, text + out, [](char c) { return c == '.'; })) {  // or empty
      text[out++] = text[in++];
      continue;
    }
    in += 3;
    if (in < length && start > 0) {
      out = start - 1;  // the slash behind the step takes this one's place and is looked at anew
    } else {
      out = start;
      if (in < length) ++in;
    }
  }
  return out;
}

}  // namespace

std::size_t NormalizePath(char* text, std::size_t length) {
  if (IsNormal(text, length)) return length;
  std::replace(text, text + length, '\\', '/');
  length = FoldSlashPairs(text, length);
  length = FoldCurrentSteps(text, length);
  length = CutCurrentDirectoryAtEnds(text, length);
  length = FoldParentSteps(text, length);
  if (length > 1 && text[length - 1] == '/') --length;
  text[length] = '\0';
  return length;
}

}  // namespace vor
