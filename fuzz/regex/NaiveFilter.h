#ifndef VOR_FUZZ_REGEX_NAIVEFILTER_H
#define VOR_FUZZ_REGEX_NAIVEFILTER_H

#include <ctype.h>
#include <stdlib.h>

#include <bitset>
#include <climits>
#include <string>
#include <vector>

// A second implementation of the filters on Unicode texts, for ASCII without NUL and for filters
// without ".": the plain search, without any short cut.

namespace naive {

struct Piece {
  std::string text;  // of a literal
  bool isRun = false;
  bool isNegated = false;
  int size = -1;
  std::bitset<128> members;  // of a block
  int tried = -1;
};

inline std::string Stripped(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string::npos ? ""
                                    : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

inline bool AddClass(const std::string& name, std::bitset<128>* members) {
  const char* const names[] = {"alnum:", "alpha:", "cntrl:", "digit:", "graph:",
                               "lower:", "print:", "punct:", "space:", "upper:"};
  int (*const tests[])(int) = {isalnum, isalpha, iscntrl, isdigit, isgraph,
                               islower, isprint, ispunct, isspace, isupper};
  for (std::size_t k = 0; k < std::size(names); ++k) {
    for (int c = 0; c < 128 && name == names[k]; ++c) {
      if (tests[k](c) != 0) members->set(static_cast<std::size_t>(c));
    }
    if (name == names[k]) return true;
  }
  return false;
}

// Reads the block at *pos and moves after it.
inline Piece Block(const std::string& f, std::size_t* pos) {
  const auto at = [&f](std::size_t i) { return i < f.size() ? f[i] : '\0'; };
  std::size_t i = *pos + 1;
  Piece block;
  block.size = 1;
  if (at(i) == '^') block.isNegated = ++i;
  while (i < f.size() && f[i] != ']') {
    if (f[i] == ':') {
      *pos = i + 2;
      if (!AddClass(f.substr(i + 1, 6), &block.members)) return block.members.reset(), block;
      i += 7;
      continue;
    }
    const bool isRange = at(i + 1) == '-' && at(i + 2) != ']';
    const char last = isRange ? at(i + 2) : f[i];
    for (int c = f[i]; c <= last; ++c) block.members.set(static_cast<std::size_t>(c));
    i += isRange ? 2 : 1;
  }
  *pos = i + 1;
  if (at(i + 1) == '*') {
    block.size = -1;
    *pos = i + 2;
  } else if (at(i + 1) == '\\' && at(i + 2) == '{') {
    const std::size_t end = f.find_first_not_of("0123456789", i + 3);
    *pos = i + 4;
    if (end >= f.size() - 2) return block;
    if (f[end] != '\\' || f[end + 1] != '}') return block.members.reset(), block;
    const long count = end == i + 3 ? 1 : strtol(f.c_str() + i + 3, nullptr, 10);
    block.size = count > INT_MAX ? 1 : static_cast<int>(count);
    *pos = end + 2;
  }
  return block;
}

inline std::vector<Piece> Compile(const std::string& filter) {
  std::vector<Piece> pieces;
  for (std::size_t pos = 0; pos < filter.size();) {
    if (filter[pos] == '[') {
      pieces.push_back(Block(filter, &pos));
      continue;
    }
    Piece piece;
    piece.isRun = filter[pos] == '*';
    if (!piece.isRun) piece.text = filter.substr(pos, filter.find_first_of("*[", pos) - pos);
    if (!piece.isRun) piece.size = static_cast<int>(piece.text.size());
    pos += piece.isRun ? 1 : piece.text.size();
    pieces.push_back(piece);
  }
  return pieces;
}

/// 1 or 0; -1 if more than \a steps steps are needed.
inline int Check(const std::string& given, const std::string& subject, int steps) {
  const std::string filter = given.empty() ? "*" : Stripped(given), s = Stripped(subject);
  if (subject.empty() || filter.empty()) return 0;
  std::vector<Piece> pieces = Compile(filter);
  const std::size_t n = s.size(), last = pieces.size();
  std::size_t i = 0, p = 0;
  const auto passes = [&](std::size_t q) {
    const Piece& block = pieces[i];
    return (q < n && block.members[static_cast<unsigned char>(s[q])]) != block.isNegated;
  };
  while (i < last || p < n) {
    bool isTaken = i < last && (p < n || pieces[i].size == -1);
    Piece& piece = pieces[isTaken ? i : 0];
    if (isTaken && piece.isRun) {
      if (i + 1 == last) return 1;
      if (piece.tried != -1) p = static_cast<std::size_t>(piece.tried) + 1;
      if (piece.tried != -1 && p > n) return 0;
      const std::string& next = pieces[i + 1].text;
      if (!next.empty() && (p > n || p + next.size() > n)) return 0;
      if (!next.empty() && (p = s.find(next[0], p)) == std::string::npos) return 0;
    } else if (isTaken && !piece.text.empty()) {
      isTaken = p + piece.text.size() <= n && subject.substr(p, piece.text.size()) == piece.text;
      if (isTaken) p += piece.text.size();
    } else if (isTaken && piece.size == -1) {
      isTaken = piece.tried == -1 || (p < n && passes(p));
      if (isTaken && piece.tried != -1) ++p;
    } else if (isTaken) {
      for (int k = 0; k < piece.size && isTaken; ++k) {
        if (--steps < 0) return -1;
        isTaken = passes(p + static_cast<std::size_t>(k));
      }
      if (isTaken) p += static_cast<std::size_t>(piece.size);
    }
    if (--steps < 0) return -1;
    if (isTaken) {
      piece.tried = static_cast<int>(p);
      ++i;
      continue;
    }
    do {
      if (i-- == 0) return 0;
    } while (pieces[i].size != -1);
    p = static_cast<std::size_t>(pieces[i].tried);
  }
  return 1;
}

}  // namespace naive

#endif  // VOR_FUZZ_REGEX_NAIVEFILTER_H
