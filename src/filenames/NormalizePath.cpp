#include "filenames/NormalizePath.h"

#include <string.h>

#include <algorithm>

// The rules delete pieces of the text again and again while they scan it.  Each pass below makes
// all deletions of one rule in one walk: `in` is the next byte to read, `out` the next one to
// write, and text[0..out) is at any time what the rule has left of text[0..in).
//
// No rule adds anything, so a text to which no rule applies stays as it is.

namespace vor {
namespace {

bool IsParentStep(const char* text, std::size_t in, std::size_t length) {
  return in + 2 < length && text[in] == '/' && text[in + 1] == '.' && text[in + 2] == '.' &&
         (in + 3 == length || text[in + 3] == '/');
}

bool IsCurrentStep(const char* text, std::size_t in, std::size_t length) {
  return in + 2 < length && text[in] == '/' && text[in + 1] == '.' && text[in + 2] == '/';
}

// Of each pair of slashes the second stays, and the walk continues after it: a run of k slashes
// becomes one of (k + 1) / 2.  Callers compare names that were folded in this way, so it must not
// fold further.
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

// The start of the last component of text[0..end).
std::size_t LastComponent(const char* text, std::size_t end) {
  while (end > 0 && text[end - 1] != '/') --end;
  return end;
}

// True for a component that a ".." step after it removes.
bool IsRemovable(const char* component, const char* end) {
  return !std::all_of(component, end, [](char c) { return c == '.'; });  // nor if it is empty
}

// A removed component is scanned backwards once.  A component of dots stays, and the ".." kept
// after it is then the component before the next step.  So no byte is scanned backwards twice.
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
    if (!IsRemovable(text + start, text + out)) {
      text[out++] = text[in++];
      continue;
    }
    in += 3;
    if (in < length && start > 0) {
      out = start - 1;  // the slash after the step takes this one's place and is looked at anew
    } else {
      out = start;
      if (in < length) ++in;
    }
  }
  return out;
}

// Whether the slash at a position, and what follows it, stays as it is.
bool IsNormalSlash(const char* text, std::size_t slash, std::size_t length) {
  if (slash + 1 == length) return length == 1;  // the root
  if (text[slash + 1] == '/' || IsCurrentStep(text, slash, length)) return false;
  if (text[slash + 1] != '.') return true;
  if (slash + 2 == length) return length == 2;
  if (!IsParentStep(text, slash, length)) return true;
  return !IsRemovable(text + LastComponent(text, slash), text + slash);
}

}  // namespace

bool IsNormalPath(const char* text, std::size_t length) {
  if (length > 2 && text[0] == '.' && text[1] == '/') return false;
  for (std::size_t i = 0; i < length; ++i) {
    if (text[i] == '\\' || (text[i] == '/' && !IsNormalSlash(text, i, length))) return false;
  }
  return true;
}

std::size_t NormalizePath(char* text, std::size_t length) {
  if (IsNormalPath(text, length)) return length;
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
