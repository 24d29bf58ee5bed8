#include "foundation/WildcardMatching.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/FieldScan.h"
#include "foundation/PatternMatch.h"

namespace {

constexpr std::string_view kStar = "*";
constexpr char kNul = '\0';

bool HasNul(std::string_view text) {
  return text.find(kNul) != std::string_view::npos;
}

// What the C library sees of a text.
std::string_view AsC(std::string_view text) {
  return text.substr(0, text.find(kNul));
}

bool IsAtStart(std::string_view piece, std::string_view pattern) {
  return piece.data() == pattern.data();
}
bool IsAtEnd(std::string_view piece, std::string_view pattern) {
  return piece.data() + piece.size() == pattern.data() + pattern.size();
}

// Whether each piece of the pattern is in its place.  False without any piece.
bool HoldsPieces(std::string_view text, std::string_view pattern) {
  vor::FieldScan scan(pattern, kStar);
  std::string_view piece;
  bool matches = false;
  std::size_t cursor = 0;  // where the piece before was found; pieces may overlap
  while (scan.Next(&piece)) {
    if (IsAtStart(piece, pattern)) {
      matches = text.starts_with(piece) && (!IsAtEnd(piece, pattern) || text.ends_with(piece));
    } else if (IsAtEnd(piece, pattern)) {
      matches = text.ends_with(piece) && cursor <= text.size() - piece.size();
    } else {
      cursor = vor::FindText(text, piece, cursor);
      matches = cursor != std::string_view::npos;
    }
    if (!matches) return false;
  }
  return matches;
}

// The same for texts in which NUL bytes end the comparisons before the pieces do.
bool HoldsPiecesAsC(std::string_view text, std::string_view pattern) {
  const std::string_view seen = AsC(text);
  vor::FieldScan scan(pattern, kStar);
  std::string_view piece;
  bool any = false;
  std::size_t cursor = 0;
  while (scan.Next(&piece)) {
    any = true;
    const std::string_view wanted = AsC(piece);
    if (IsAtStart(piece, pattern) && !(HasNul(piece) ? seen == wanted : seen.starts_with(wanted))) {
      return false;
    }
    if (IsAtEnd(piece, pattern) && text.size() >= piece.size() &&
        AsC(text.substr(text.size() - piece.size())) != wanted) {
      return false;
    }
    if (wanted.empty()) continue;
    cursor = vor::FindText(seen, wanted, cursor);
    if (cursor == std::string_view::npos) return false;
  }
  return any;
}

char ToUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

bool vor::MatchesPattern(std::string_view text, std::string_view pattern) {
  if (pattern == kStar || text == pattern) return true;
  if (HasNul(text) || HasNul(pattern)) return HoldsPiecesAsC(text, pattern);
  return HoldsPieces(text, pattern);
}

int TestMatch(const VorString& text, const VorString& pattern) {
  return vor::MatchesPattern(text.View(), pattern.View());
}

int TestMatchNoCase(const VorString& text, const VorString& pattern) {
  if (pattern.View() == kStar) return 1;
  // Both in upper case, one behind the other; only texts far longer than names need the heap.
  const std::size_t size = text.View().size() + pattern.View().size();
  std::array<char, 1024> room;
  std::string large;
  if (size > room.size()) large.resize(size);
  char* const upperText = large.empty() ? room.data() : large.data();
  char* const upperPattern =
      std::transform(text.View().begin(), text.View().end(), upperText, ToUpper);
  std::transform(pattern.View().begin(), pattern.View().end(), upperPattern, ToUpper);
  return vor::MatchesPattern({upperText, text.View().size()},
                             {upperPattern, pattern.View().size()});
}
