#include "foundation/WildcardMatching.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/AsciiCase.h"
#include "foundation/FieldScan.h"
#include "foundation/FindText.h"
#include "foundation/PatternMatch.h"

// MatchesAsC is the plain form of the rule: it looks for one piece of the pattern after the other
// and compares as the C library does, for which a NUL byte ends a text.
//
// Matching is the inner loop of directory reading, where most names differ from the pattern in the
// first byte that is compared.  MatchesPattern is the fast form for texts and patterns without NUL
// bytes.  It compares the first piece, then the last one, then those between (MatchesBetween), and
// reads no byte earlier than it needs it.  It checks for NUL bytes on the way and, if one could
// change the result, returns that of MatchesAsC.

namespace {

constexpr char kStar = '*';
constexpr char kNul = '\0';
constexpr std::size_t kNone = std::string_view::npos;

// The part of a text that the C library sees.
std::string_view AsC(std::string_view text) {
  return text.substr(0, text.find(kNul));
}

bool HasNul(std::string_view text) {
  return text.find(kNul) != kNone;
}

// The rule for any bytes.
bool MatchesAsC(std::string_view text, std::string_view pattern) {
  if (text == pattern) return true;
  const std::string_view seen = AsC(text);
  vor::FieldScan scan(pattern, std::string_view(&kStar, 1));
  std::string_view piece;
  bool any = false;
  std::size_t cursor = 0;  // where the previous piece was found; pieces may overlap
  while (scan.Next(&piece)) {
    const bool isAtStart = piece.data() == pattern.data();
    const bool isAtEnd = piece.data() + piece.size() == pattern.data() + pattern.size();
    const std::string_view wanted = AsC(piece);
    any = true;
    if (isAtStart && !(HasNul(piece) ? seen == wanted : seen.starts_with(wanted))) return false;
    if (isAtEnd && text.size() >= piece.size() &&
        AsC(text.substr(text.size() - piece.size())) != wanted) {
      return false;
    }
    if (wanted.empty()) continue;
    cursor = vor::FindText(seen, wanted, cursor);
    if (cursor == kNone) return false;
  }
  return any;
}

// The rest of MatchesPattern, for a text that begins with the first piece and ends with the last
// one.  The lengths of these pieces are first and last.  Out of line, so that names that differ
// earlier need no stack frame.
__attribute__((noinline)) bool MatchesBetween(std::string_view text, std::string_view pattern,
                                              std::size_t first, std::size_t last) {
  bool any = first + last > 0;
  std::size_t cursor = 0;  // where the previous piece was found; pieces may overlap
  const std::size_t lastStar = pattern.size() - last - 1;
  for (std::size_t start = first + 1; start <= lastStar;) {
    std::size_t end = start;
    for (; pattern[end] != kStar; ++end) {
      if (pattern[end] == kNul) return MatchesAsC(text, pattern);
    }
    if (start < end) {
      any = true;
      cursor = vor::FindText(text, pattern.substr(start, end - start), cursor);
      if (cursor == kNone) {
        return end < lastStar && HasNul(pattern.substr(end)) && MatchesAsC(text, pattern);
      }
    }
    start = end + 1;
  }
  if (!any) return pattern.size() == 1 || text == pattern;  // "*" matches all, "**" only itself
  return cursor <= text.size() - last && (!HasNul(text) || MatchesAsC(text, pattern));
}

}  // namespace

bool vor::MatchesPattern(std::string_view text, std::string_view pattern) {
  if (pattern.empty()) return text.empty();

  std::size_t first = 0;  // length of the first piece
  for (; first < pattern.size() && pattern[first] != kStar; ++first) {
    if (pattern[first] == kNul) return MatchesAsC(text, pattern);
    if (first == text.size() || text[first] != pattern[first]) return false;
  }
  if (first == pattern.size()) return text.ends_with(pattern);  // no star

  std::size_t last = 0;  // length of the last piece
  bool differs = false;
  for (; pattern[pattern.size() - 1 - last] != kStar; ++last) {
    const char wanted = pattern[pattern.size() - 1 - last];
    if (wanted == kNul) return MatchesAsC(text, pattern);
    if (!differs) differs = last == text.size() || text[text.size() - 1 - last] != wanted;
  }
  return !differs && MatchesBetween(text, pattern, first, last);
}

int TestMatch(const VorString& text, const VorString& pattern) {
  return vor::MatchesPattern(text.View(), pattern.View());
}

int TestMatchNoCase(const VorString& text, const VorString& pattern) noexcept {
  if (pattern == "*") return 1;
  // Both in upper case, one after the other.  Only texts far longer than names need the heap.
  const std::size_t size = text.View().size() + pattern.View().size();
  std::array<char, 1024> room;
  std::string large;
  if (size > room.size()) large.resize(size);
  char* const upperText = large.empty() ? room.data() : large.data();
  char* const upperPattern =
      std::transform(text.View().begin(), text.View().end(), upperText, vor::AsciiUpper);
  std::transform(pattern.View().begin(), pattern.View().end(), upperPattern, vor::AsciiUpper);
  return vor::MatchesPattern({upperText, text.View().size()},
                             {upperPattern, pattern.View().size()});
}
