#ifndef VOR_FUZZ_FOUNDATION_NAIVE_H
#define VOR_FUZZ_FOUNDATION_NAIVE_H

#include <string.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Simple second implementations, which copy texts freely, and helpers to divide fuzzer input.

namespace naive {

using Fields = std::vector<std::string>;

/// The input cut at its newlines into exactly \a count parts; the last one is the rest.
inline Fields Parts(const std::uint8_t* data, std::size_t size, std::size_t count) {
  std::string rest(reinterpret_cast<const char*>(data), size);
  Fields parts;
  while (parts.size() + 1 < count) {
    const std::size_t end = rest.find('\n');
    parts.push_back(rest.substr(0, end));
    rest.erase(0, end == std::string::npos ? end : end + 1);
  }
  parts.push_back(rest);
  return parts;
}

/// Maps the bytes to letters of a small alphabet, so that random input often contains syntax.
inline std::string Folded(std::string text, std::string_view alphabet) {
  for (char& c : text) c = alphabet[static_cast<unsigned char>(c) % alphabet.size()];
  return text;
}

inline Fields Split(const std::string& text, const std::string& separator) {
  Fields fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t found = text.find(separator, start);
    if (found == std::string::npos) break;
    if (start < found) fields.push_back(text.substr(start, found - start));
    start = found + separator.size();
  }
  if (start < text.size()) fields.push_back(text.substr(start));
  return fields;
}

inline Fields Split(const std::string& text, const std::string& separator, int count) {
  Fields fields;
  int previous = -1;
  for (int found = 0; count >= 2 && found != count - 1;) {
    const std::size_t position = text.find(separator, static_cast<std::size_t>(previous + 1));
    if (position == std::string::npos) break;
    ++found;
    if (previous + 1 < static_cast<int>(position)) {
      fields.push_back(text.substr(static_cast<std::size_t>(previous + 1),
                                   position - static_cast<std::size_t>(previous + 1)));
    }
    previous = static_cast<int>(position);
  }
  const auto start = static_cast<std::size_t>(previous + 1);
  if (start < text.size()) fields.push_back(text.substr(start));
  return fields;
}

inline bool TestMatch(const std::string& text, const std::string& pattern) {
  if (pattern == "*" || text == pattern) return true;
  const Fields pieces = Split(pattern, "*");
  if (pieces.empty()) return false;
  const std::string& first = pieces.front();
  const std::string& last = pieces.back();
  if (pattern.front() != '*' && strncmp(text.c_str(), first.c_str(), first.size()) != 0) {
    return false;
  }
  if (pattern.back() != '*' && text.size() >= last.size() &&
      strcmp(text.c_str() + text.size() - last.size(), last.c_str()) != 0) {
    return false;
  }
  const char* cursor = text.c_str();
  for (const std::string& piece : pieces) {
    cursor = strstr(cursor, piece.c_str());
    if (cursor == nullptr) return false;
  }
  return true;
}

inline bool TestMatchWithLogExp(const std::string& text, std::string e) {
  const auto isEnclosed = [&e](std::string_view opening) {
    return e.starts_with(opening) && e.ends_with(')');
  };
  if (isEnclosed("!(")) {
    return e.size() > 3 && !TestMatchWithLogExp(text, e.substr(2, e.size() - 3));
  }
  while (isEnclosed("(")) e = e.substr(1, e.size() - 2);

  std::string marked = e;
  int depth = 0;
  bool hasAnd = false, hasOr = false;
  for (std::size_t i = 0; i < e.size(); ++i) {
    if (e[i] == '(') ++depth;
    if (e[i] == ')') --depth;
    if (depth != 0 || i + 1 == e.size() || marked[i] == '\x7F' || e[i] != e[i + 1]) continue;
    if (e[i] == '&' || e[i] == '|') {
      (e[i] == '&' ? hasAnd : hasOr) = true;
      marked[i] = marked[i + 1] = '\x7F';
    }
  }
  if ((hasAnd && hasOr) || depth != 0) return false;
  if (hasAnd || hasOr) {
    for (const std::string& operand : Split(marked, "\x7F\x7F")) {
      if (TestMatchWithLogExp(text, operand) == hasOr) return hasOr;
    }
    return hasAnd;
  }

  bool negate = false;
  while (e.size() > 1) {
    if (isEnclosed("(")) {
      e = e.size() < 3 ? "" : e.substr(1);
    } else if (e.front() == '!') {
      negate = !negate;
      e.erase(0, 1);
    } else {
      break;
    }
  }
  return TestMatch(text, e) != negate;
}

}  // namespace naive

#endif  // VOR_FUZZ_FOUNDATION_NAIVE_H
