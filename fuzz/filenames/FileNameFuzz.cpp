// Compares normal form and path operations of TAFileName with the rules applied step by step.

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "filenames/TAFileName.h"

namespace {

// The byte at a position, or the terminator at the end.
char At(const std::string& text, std::size_t position) {
  return position < text.size() ? text[position] : '\0';
}

bool AnyEnds(const std::string& text, std::size_t position, std::size_t count) {
  return position + count > text.size();
}

void FoldSlashes(std::string& text) {
  for (std::size_t i = 0; !AnyEnds(text, i, 2); ++i) {
    if (text[i] == '/' && text[i + 1] == '/') text.erase(i, 1);
  }
}

void FoldCurrentSteps(std::string& text) {
  for (std::size_t i = 0; !AnyEnds(text, i, 3);) {
    if (text.compare(i, 3, "/./") == 0) {
      text.erase(i, 2);
      if (i > 0) --i;
    } else {
      ++i;
    }
  }
}

void FoldParentSteps(std::string& text) {
  if (text.size() <= 3) return;
  std::size_t i = 1;
  while (!AnyEnds(text, i, 3)) {
    const char behind = At(text, i + 3);
    if (text.compare(i, 3, "/..") != 0 || (behind != '/' && behind != '\0')) {
      ++i;
      continue;
    }
    const std::size_t slash = text.rfind('/', i - 1);
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    const std::string component = text.substr(start, i - start);
    if (component.find_first_not_of('.') == std::string::npos) {
      ++i;
      continue;
    }
    text.erase(start, component.size() + 3 + (behind == '/' ? 1 : 0));
    i = slash == std::string::npos || slash == 0 ? 1 : slash;
  }
}

std::string Normal(std::string text) {
  for (char& c : text) {
    if (c == '\\') c = '/';
  }
  FoldSlashes(text);
  FoldCurrentSteps(text);
  if (text.size() > 2) {
    if (text.ends_with("/.")) text.erase(text.size() - 2);
    if (text.starts_with("./")) text.erase(0, 2);
  }
  FoldParentSteps(text);
  if (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

// The n-th component from the end, and the text before the last n; "" if there is none.
std::string Base(const std::string& text, int n) {
  std::size_t slash = text.size();
  for (int i = 0; i < n; ++i) {
    slash = slash == 0 ? std::string::npos : text.rfind('/', slash - 1);
    if (slash == std::string::npos) return text;
  }
  const std::string rest = text.substr(slash + 1);
  return Normal(rest.substr(0, rest.find('/')));
}

std::string Directory(std::string text, int n) {
  for (int i = 0; i < n; ++i) {
    const std::size_t slash = text.rfind('/');
    if (slash == std::string::npos || slash == 0) return "";
    text.erase(slash);
  }
  return Normal(text);
}

bool IsUnder(std::string text, const std::string& directory) {
  for (; text != directory; text = Directory(text, 1)) {
    if (text.find('/', 1) == std::string::npos) return false;
  }
  return true;
}

void Check(const std::string& what, const std::string& ours, const std::string& expected) {
  if (ours == expected) return;
  std::cerr << what << ": \"" << ours << "\", expected \"" << expected << "\"\n";
  abort();
}

std::string Text(const TAFileName& name) {
  return static_cast<const char*>(name);
}

// The same bytes written with the few characters that the rules are about.
std::string Dense(std::string text) {
  for (char& c : text) c = "//..\\ab\xff"[static_cast<unsigned char>(c) % 8];
  return text;
}

void CheckAll(const std::string& given) {
  const std::string whole = given.substr(0, given.find('\0'));
  const std::string half = whole.substr(0, whole.size() / 2);
  const std::string tail = whole.substr(half.size());
  const std::string normal = Normal(whole);

  const TAFileName name(given.data(), static_cast<int>(given.size()));
  Check("normal form", Text(name), normal);
  TAFileName joined(half.c_str());
  joined += tail.c_str();
  Check("join", Text(joined), half.empty() ? Normal(tail) : Normal(Normal(half) + "/" + tail));
  TAFileName raw;
  raw.AddExtension(VorString(whole));
  Check("added", Text(raw), whole);

  for (const TAFileName& path : {name, raw}) {
    const std::string text = Text(path);
    for (int n = 1; n <= 3; ++n) {
      Check("basename", Text(path.basename(n)), Base(text, n));
      Check("dirname", Text(path.dirname(n)), Directory(text, n));
    }
    for (const TAFileName& directory : {TAFileName(half.c_str()), path.dirname(2)}) {
      if (path.IsNull() || directory.IsNull()) continue;
      const bool isUnder = IsUnder(text, Text(directory));
      Check("under", std::to_string(path.IsUnderDirectory(directory)), std::to_string(isUnder));
    }
  }
  const char* const place = raw;
  TAFileName shared(raw);
  shared.Normalize();
  Check("normalised a shared text", Text(shared), normal);
  Check("stayed shared", std::to_string(static_cast<const char*>(shared) == place),
        std::to_string(normal == whole));
  shared = TAFileName();
  raw.Normalize();
  Check("normalised", Text(raw), normal);
  Check("stayed in place", std::to_string(static_cast<const char*>(raw) == place), "1");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string given(reinterpret_cast<const char*>(data), size);
  CheckAll(given);
  CheckAll(Dense(given));
  return 0;
}
