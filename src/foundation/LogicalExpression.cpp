#include "foundation/LogicalExpression.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FindText.h"
#include "foundation/PatternMatch.h"

// An expression is evaluated on its text; there is no syntax tree.  Each level (the whole
// expression, an operand, the inside of a negated group) is evaluated in the same steps:
//   1. Remove the parentheses around it.
//   2. Overwrite the operators outside all inner parentheses by markers.
//   3. Split the text at the markers, including those that the expression contained itself.
//   4. Evaluate the operands in order, until one of them decides.
// A level without an operator is a pattern.
//
// There are two implementations.  Nearly all expressions are short and contain no marker bytes;
// EvaluateShort evaluates them recursively on views of their text and needs no markers.  Evaluation
// evaluates all others.  It does not recurse and makes only a few passes over the text, so that a
// hostile expression exhausts neither the stack nor the time of its caller.

namespace {

constexpr char kMark = '\x7F';
constexpr std::string_view kMarker = "\x7F\x7F";
constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kShort = 256;  // bytes; limits the depth and the cost of the recursion

bool IsGroup(std::string_view e) {
  return e.size() > 1 && e.front() == '(' && e.back() == ')';
}
bool IsNegatedGroup(std::string_view e) {
  return e.size() > 2 && e.front() == '!' && IsGroup(e.substr(1));
}

int DepthStep(char c) {
  return c == '(' ? 1 : c == ')' ? -1 : 0;
}

// Indexed by byte: whether it can have a meaning besides that of pattern text.
constexpr std::array<bool, 256> kIsSyntax = [] {
  std::array<bool, 256> isSyntax{};
  for (const char c : {'&', '|', '!', '(', ')', kMark})
    isSyntax[static_cast<unsigned char>(c)] = true;
  return isSyntax;
}();

bool IsSyntax(char c) {
  return kIsSyntax[static_cast<unsigned char>(c)];
}

bool IsOperator(std::string_view e, std::size_t position) {
  const char c = e[position];
  return (c == '&' || c == '|') && position + 1 < e.size() && e[position + 1] == c;
}

// Removes negations of groups from *e, then the parentheses around the rest.  Returns whether the
// value of the rest must be negated.  An empty negated group is invalid and leaves "(".
bool RemoveGroups(std::string_view* e) {
  bool isNegated = false;
  while (IsNegatedGroup(*e)) {
    if (e->size() == 3) {
      *e = e->substr(1, 1);
      return isNegated;
    }
    *e = e->substr(2, e->size() - 3);
    isNegated = !isNegated;
  }
  while (IsGroup(*e)) *e = e->substr(1, e->size() - 2);
  return isNegated;
}

// The value of a level without operators.
bool EvaluateTerm(std::string_view text, std::string_view e) {
  bool isNegated = false;
  while (e.size() > 1) {
    if (IsGroup(e)) {
      // The closing parenthesis becomes part of the pattern; stored expressions rely on it.
      e = e.size() < 3 ? std::string_view() : e.substr(1);
    } else if (e.front() == '!') {
      isNegated = !isNegated;
      e.remove_prefix(1);
    } else {
      break;
    }
  }
  return vor::MatchesPattern(text, e) != isNegated;
}

bool EvaluateShort(std::string_view text, std::string_view e);

// The value of an operand.  Only a group can contain operators.
bool EvaluateShortOperand(std::string_view text, std::string_view e) {
  return IsGroup(e) || IsNegatedGroup(e) ? EvaluateShort(text, e) : EvaluateTerm(text, e);
}

// The value of a short expression without marker bytes.
bool EvaluateShort(std::string_view text, std::string_view e) {
  const bool isNegated = RemoveGroups(&e);
  char found = '\0';      // the operator of this level
  bool value = false;     // of the operands so far
  std::size_t start = 0;  // of the next operand
  int depth = 0;
  for (std::size_t i = 0; i < e.size(); ++i) {
    if (!IsSyntax(e[i])) continue;
    depth += DepthStep(e[i]);
    if (depth != 0 || !IsOperator(e, i)) continue;
    if (found != '\0' && found != e[i]) return isNegated;  // mixed
    // Once an operand has decided, the others need not be evaluated.
    if (found == '\0') value = e[i] == '&';
    found = e[i];
    if (start < i && value == (found == '&')) {
      value = EvaluateShortOperand(text, e.substr(start, i - start));
    }
    start = ++i + 1;
  }
  if (depth != 0) return isNegated;
  if (found == '\0') return EvaluateTerm(text, e) != isNegated;
  if (start < e.size() && value == (found == '&')) {
    value = EvaluateShortOperand(text, e.substr(start));
  }
  return value != isNegated;
}

// Evaluates any expression.
//
// The levels lie inside one another, so one copy of the expression can hold the markers of all of
// them.  An explicit stack holds the levels, and an index of the groups lets a scan skip them.  A
// level with an operator is split at every marker in it, even at those inside its groups, so no
// operand contains a marker.
class Evaluation {
 public:
  Evaluation(std::string_view text, std::string_view expression);

  bool Run();

 private:
  // A part of the expression, by 0-based positions; end is one after the last.
  struct Range {
    std::size_t begin;
    std::size_t end;
  };

  // An operator level whose operands are being evaluated.
  struct Level {
    std::size_t first;  // the operands are _operands[first] to [last - 1]
    std::size_t next;   // to be evaluated
    std::size_t last;
    bool isAnd;      // "&&", otherwise "||"
    bool isNegated;  // by the negated groups around it
  };

  void IndexGroups();
  void IndexMarkers();
  bool Enter(Range range);
  bool MarkOperators(Range range, char* found);
  void PushOperands(Range range);
  void CutAtMarkers(Range range, std::size_t* start);
  bool HoldsMarker(Range range) const;

  std::string_view _text;
  std::string _expression;
  std::vector<Level> _levels;            // the innermost last
  std::vector<Range> _operands;          // of all levels, those of the innermost last
  std::vector<std::size_t> _afterGroup;  // by position of a parenthesis; kNone without an end
  std::vector<std::size_t> _markers;     // positions of the markers that the expression contained
};

Evaluation::Evaluation(std::string_view text, std::string_view expression)
    : _text(text), _expression(expression) {
  IndexGroups();
  IndexMarkers();
}

bool Evaluation::Run() {
  Range range = {0, _expression.size()};
  for (;;) {
    bool value = Enter(range);
    while (!_levels.empty()) {
      Level& level = _levels.back();
      if (value == level.isAnd && level.next < level.last) {
        range = _operands[level.next++];
        break;
      }
      value = value != level.isNegated;
      _operands.resize(level.first);
      _levels.pop_back();
    }
    if (_levels.empty()) return value;
  }
}

// Begins a level.  Returns the value of one without an operator.  One with an operator is pushed on
// the stack; the value returned then holds unless an operand decides otherwise.
bool Evaluation::Enter(Range range) {
  std::string_view e = std::string_view(_expression).substr(range.begin, range.end - range.begin);
  const bool isNegated = RemoveGroups(&e);
  range.begin = static_cast<std::size_t>(e.data() - _expression.data());
  range.end = range.begin + e.size();

  char found = '\0';
  if (!MarkOperators(range, &found)) return isNegated;
  if (found == '\0') return EvaluateTerm(_text, e) != isNegated;
  const std::size_t first = _operands.size();
  PushOperands(range);
  _levels.push_back({first, first, _operands.size(), found == '&', isNegated});
  return found == '&';
}

// Overwrites the operators of a level and stores '&' or '|' in *found if there are any.  Returns
// false if they are mixed or the parentheses are not balanced.
bool Evaluation::MarkOperators(Range range, char* found) {
  const std::string_view e = std::string_view(_expression).substr(0, range.end);
  for (std::size_t i = range.begin; i < range.end;) {
    if (DepthStep(e[i]) != 0) {
      i = _afterGroup[i];
      if (i > range.end) return false;
    } else if (IsOperator(e, i)) {
      if (*found != '\0' && *found != e[i]) return false;
      *found = e[i];
      _expression.replace(i, kMarker.size(), kMarker);
      i += kMarker.size();
    } else {
      ++i;
    }
  }
  return true;
}

// Pushes the operands of a level whose operators are overwritten.
void Evaluation::PushOperands(Range range) {
  std::size_t start = range.begin;  // of the operand that is not pushed yet
  for (std::size_t i = range.begin; i < range.end;) {
    const bool isInGroup = DepthStep(_expression[i]) != 0;
    std::size_t end = i;
    if (isInGroup) {
      end = _afterGroup[i];
    } else {
      while (end < range.end && DepthStep(_expression[end]) == 0) ++end;
    }
    // Outside groups MarkOperators has set markers; inside groups, the only markers are those that
    // the expression itself contained.
    if (!isInGroup || HoldsMarker({i, end})) CutAtMarkers({i, end}, &start);
    i = end;
  }
  if (start < range.end) _operands.push_back({start, range.end});
}

// Pushes the non-empty texts between *start and the markers of a range.  *start becomes the
// position after the last marker.
void Evaluation::CutAtMarkers(Range range, std::size_t* start) {
  const std::string_view e = std::string_view(_expression).substr(0, range.end);
  for (std::size_t i = range.begin;; i = *start) {
    i = vor::FindText(e, kMarker, i);
    if (i == kNone) return;
    if (*start < i) _operands.push_back({*start, i});
    *start = i + kMarker.size();
  }
}

// Stores for each parenthesis the position after its group: after the parenthesis that returns to
// the same depth.  A group may begin with a closing parenthesis; it then lies at lower depths.
void Evaluation::IndexGroups() {
  std::ptrdiff_t depth = 0, lowest = 0, highest = 0;
  for (const char c : _expression) {
    depth += DepthStep(c);
    lowest = std::min(lowest, depth);
    highest = std::max(highest, depth);
  }
  _afterGroup.assign(_expression.size(), kNone);
  std::vector<std::size_t> open(static_cast<std::size_t>(highest - lowest) + 1, kNone);  // by depth
  depth = -lowest;
  for (std::size_t i = 0; i < _expression.size(); ++i) {
    const int step = DepthStep(_expression[i]);
    if (step == 0) continue;
    open[static_cast<std::size_t>(depth)] = i;
    depth += step;
    std::size_t& ended = open[static_cast<std::size_t>(depth)];
    if (ended != kNone) _afterGroup[ended] = i + 1;
    ended = kNone;
  }
}

void Evaluation::IndexMarkers() {
  for (std::size_t i = 0;; ++i) {
    i = vor::FindText(_expression, kMarker, i);
    if (i == kNone) return;
    _markers.push_back(i);
  }
}

bool Evaluation::HoldsMarker(Range range) const {
  const auto next = std::lower_bound(_markers.begin(), _markers.end(), range.begin);
  return next != _markers.end() && *next < range.end;
}

// Out of line, so that short expressions need not set up its stack frame.
__attribute__((noinline)) bool EvaluateAny(std::string_view text, std::string_view expression) {
  return Evaluation(text, expression).Run();
}

}  // namespace

int TestMatchWithLogExp(const VorString& text, const VorString& expression) noexcept {
  const std::string_view e = expression.View();
  if (std::none_of(e.begin(), e.end(), IsSyntax)) return vor::MatchesPattern(text.View(), e);
  const bool isShort = e.size() <= kShort && e.find(kMark) == kNone;
  return isShort ? EvaluateShort(text.View(), e) : EvaluateAny(text.View(), e);
}
