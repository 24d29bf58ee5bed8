// The compiler of filters.
//
// A filter becomes a row of lexemes:
//
//     Literal       a run of characters other than "*", "." and "["
//     AnyRun        "*"
//     AnyCharacter  "."
//     Block         "[" set "]", perhaps repeated by "*" or by a count
//     NegatedBlock  "[^" set "]", the same
//
// Each lexeme takes a number of characters, its Size; AnyRun and a block repeated by "*" are
// variable.  A block also names its character operations, First to Last: a character is in the set
// if it passes one of them.
//
// The compiler reads the filter once, from left to right.  Each token opens the lexeme of the next
// one, which is an empty literal until it is known to be something else.  So a compiled filter ends
// with an empty literal, the closing lexeme, which takes no part in a match.
//
// No filter is refused.  A block with an unknown class or a bad count has no operations, and the
// text after the fault is read as text outside brackets.
//
// To spare most look-ups of operations, each literal and block also has the set of ASCII characters
// that it may begin with.

#include "regex/FilterProgram.h"

#include <stdio.h>

#include <algorithm>
#include <climits>
#include <initializer_list>
#include <iterator>
#include <new>
#include <utility>

namespace vor {
namespace {

constexpr VorUnicodeChar kStar('*');
constexpr VorUnicodeChar kDot('.');
constexpr VorUnicodeChar kOpenBlock('[');
constexpr VorUnicodeChar kCloseBlock(']');
constexpr VorUnicodeChar kDash('-');
constexpr VorUnicodeChar kColon(':');
constexpr VorUnicodeChar kBackslash('\\');
constexpr VorUnicodeChar kOpenCount('{');
constexpr VorUnicodeChar kCloseCount('}');
constexpr VorUnicodeChar kCaret('^');

constexpr int kFirstCapacity = 64;

constexpr AsciiSet Ranges(std::initializer_list<std::pair<char32_t, char32_t>> ranges) {
  AsciiSet set;
  for (const auto& [first, last] : ranges) set.Add(first, last);
  return set;
}

struct CharacterClass {
  const char* name;
  int (VorUnicodeChar::*test)() const;
  AsciiSet ascii;  // its ASCII characters; a constant, so its initialisation needs no lock
};

// In the order of the operation types.  ":xdigit:" is refused like any unknown name, and filters
// rely on how it is read then.
constexpr int kNameLength = 6;
constexpr CharacterClass kClasses[] = {
    {"alnum:", &VorUnicodeChar::IsAlnum, Ranges({{'0', '9'}, {'A', 'Z'}, {'a', 'z'}})},
    {"alpha:", &VorUnicodeChar::IsAlpha, Ranges({{'A', 'Z'}, {'a', 'z'}})},
    {"cntrl:", &VorUnicodeChar::IsCntrl, Ranges({{0, 31}, {127, 127}})},
    {"digit:", &VorUnicodeChar::IsDigit, Ranges({{'0', '9'}})},
    {"graph:", &VorUnicodeChar::IsGraph, Ranges({{'!', '~'}})},
    {"lower:", &VorUnicodeChar::IsLower, Ranges({{'a', 'z'}})},
    {"print:", &VorUnicodeChar::IsPrint, Ranges({{' ', '~'}})},
    {"punct:", &VorUnicodeChar::IsPunct, Ranges({{'!', '/'}, {':', '@'}, {'[', '`'}, {'{', '~'}})},
    {"space:", &VorUnicodeChar::IsSpace, Ranges({{'\t', '\r'}, {' ', ' '}})},
    {"upper:", &VorUnicodeChar::IsUpper, Ranges({{'A', 'Z'}})}};

}  // namespace

template <typename T>
bool FilterProgram::GrowingArray<T>::MakeRoom(int last) {
  if (last < _capacity) return true;
  if (_capacity > INT_MAX / 2) return false;
  const int grown = _capacity == 0 ? kFirstCapacity : 2 * _capacity;
  std::unique_ptr<T[]> larger(new (std::nothrow) T[static_cast<std::size_t>(grown)]);
  if (larger == nullptr) return false;
  std::copy_n(_elements.get(), _capacity, larger.get());
  _elements = std::move(larger);
  _capacity = grown;
  return true;
}

bool FilterProgram::Compile(const VorUnicodeString& filter) {
  _filter = filter;
  _length = _filter.GetLengthInChar();
  _lastOperation = -1;
  _lastLexeme = -1;
  if (CompileLexemes()) return true;
  _lastLexeme = -1;  // so that no walk reaches missing lexemes
  return false;
}

bool FilterProgram::CompileLexemes() {
  int pos = 0;
  if (!AddLexeme(pos, Literal)) return false;
  do {
    if (!DecodeToken(pos) || !AddLexeme(pos, Literal)) return false;
  } while (pos < _length);
  if (_lexemes[_lastLexeme].Start < _length && !AddLexeme(_length, EndMark)) return false;

  for (int i = 0; i <= _lastLexeme; ++i) {
    Lexeme& lexeme = _lexemes[i];
    if (lexeme.Type == Literal) {
      lexeme.Size = (i < _lastLexeme ? _lexemes[i + 1].Start : _length) - lexeme.Start;
    }
    lexeme.ascii = BeginningOf(lexeme);
  }
  return true;
}

bool FilterProgram::AddLexeme(int start, int type) {
  ++_lastLexeme;
  if (!_lexemes.MakeRoom(_lastLexeme)) return false;
  _lexemes[_lastLexeme] = {start, type, kVariable, -1, -1, -1, 0, {}};
  return true;
}

bool FilterProgram::AddCharacterOperation(int type) {
  ++_lastOperation;
  if (!_operations.MakeRoom(_lastOperation)) return false;
  _operations[_lastOperation] = {type, {}, {}};
  return true;
}

// Decodes one token and moves pos after it.  Returns false only if there was no memory.
bool FilterProgram::DecodeToken(int& pos) {
  const auto isSpecial = [](VorUnicodeChar c) {
    return c == kStar || c == kDot || c == kOpenBlock;
  };
  const VorUnicodeChar c = _filter[pos];
  if (c == kOpenBlock) {
    DecodeBlock(pos);  // after a fault, the rest is read outside brackets
    ++pos;
    return _lastOperation < _operations.Capacity();
  }
  if (isSpecial(c)) {
    const int type = c == kStar ? AnyRun : AnyCharacter;
    Lexeme& current = _lexemes[_lastLexeme];
    if (current.Start != pos) return AddLexeme(pos++, type);
    current.Type = type;
    current.Size = type == AnyRun ? kVariable : 1;
    ++pos;
    return true;
  }
  _lexemes[_lastLexeme] = {pos, Literal, kVariable, -1, -1, -1, 0, {}};
  while (pos < _length && !isSpecial(_filter[pos])) ++pos;
  return true;
}

// Decodes the block at pos into the current lexeme and leaves pos at its last character.  Returns
// false for a malformed one, whose lexeme then has no operations.
bool FilterProgram::DecodeBlock(int& pos) {
  Lexeme& block = _lexemes[_lastLexeme];
  block = {pos, Block, 1, _lastOperation + 1, -1, -1, 0, {}};
  ++pos;
  if (_filter[pos] == kCaret) {
    block.Type = NegatedBlock;
    ++pos;
  }
  while (pos < _length && _filter[pos] != kCloseBlock) {
    if (!DecodeCharacterRule(pos)) return false;
  }
  if (!DecodeRepetition(pos)) return false;
  block.Last = _lastOperation;
  return true;
}

bool FilterProgram::DecodeCharacterRule(int& pos) {
  if (!AddCharacterOperation(-1)) return false;
  CharacterOperation& rule = _operations[_lastOperation];
  rule.First = _filter[pos++];
  if (rule.First == kColon) {
    const auto named =
        std::find_if(std::begin(kClasses), std::end(kClasses),
                     [&](const CharacterClass& each) { return StartsWith(pos, each.name); });
    if (named == std::end(kClasses)) return false;
    rule.Type = FirstClass + static_cast<int>(named - kClasses);
    pos += kNameLength;
    return true;
  }
  rule.Type = Equal;
  if (_filter[pos] == kDash && _filter[pos + 1] != kCloseBlock) {
    // The upper bound is also read as a character of its own, as the dump shows.
    rule.Type = InRange;
    rule.Last = _filter[++pos];
  }
  return true;
}

// Decodes what may follow the end of a block at pos.
bool FilterProgram::DecodeRepetition(int& pos) {
  Lexeme& block = _lexemes[_lastLexeme];
  if (pos < _length - 1 && _filter[pos + 1] == kStar) {
    ++pos;
    block.Size = kVariable;
    return true;
  }
  if (pos >= _length - 2 || _filter[pos + 1] != kBackslash || _filter[pos + 2] != kOpenCount) {
    return true;
  }
  pos += 3;
  // Filters rely on a count at their very end being ignored: its block takes one character, and
  // the end of the count is literal text.
  for (int end = pos; end < _length - 2; ++end) {
    if (_filter[end] == kBackslash && _filter[end + 1] == kCloseCount) {
      _filter.SubString(pos, end - pos).ConvertToNum(&block.Size, "%d");
      pos = end + 1;
      return true;
    }
    if (_filter[end].IsDigit() == 0) return false;
  }
  return true;
}

bool FilterProgram::StartsWith(int pos, const char* text) const {
  for (; *text != '\0'; ++text, ++pos) {
    if (_filter[pos] != *text) return false;
  }
  return true;
}

AsciiSet FilterProgram::BeginningOf(const Lexeme& lexeme) const {
  AsciiSet set;
  if (lexeme.Type == Literal) {
    const char32_t first = _filter[lexeme.Start].GetCodePoint();
    set.Add(first, first);
  }
  for (int op = lexeme.First; op != -1 && op <= lexeme.Last; ++op) {
    const CharacterOperation& rule = _operations[op];
    const char32_t first = rule.First.GetCodePoint();
    if (rule.Type == Equal) {
      set.Add(first, first);
    } else if (rule.Type == InRange) {
      set.Add(first, rule.Last.GetCodePoint());
    } else {
      set.Add(kClasses[rule.Type - FirstClass].ascii);
    }
  }
  if (lexeme.Type == NegatedBlock) set.Invert();
  return set;
}

bool FilterProgram::Passes(VorUnicodeChar c, int op) const {
  if (op < 0 || op > _lastOperation || op >= _operations.Capacity()) return false;
  const CharacterOperation& rule = _operations[op];
  if (rule.Type == Equal) return c == rule.First;
  if (rule.Type == InRange) return c >= rule.First && c <= rule.Last;
  if (rule.Type < FirstClass || rule.Type > LastClass) return false;
  return (c.*kClasses[rule.Type - FirstClass].test)() != 0;
}

void FilterProgram::Print() const {
  printf(" ----------> Regular Expression <----------\n");
  printf(" ----  Filter definition <%s> with %d valid characters\n", _filter.CastToCharPtr(),
         _length);
  printf(" ----  %d lexemes detected\n", _lastLexeme);
  printf(" ----  Lex / Start : Type  : Size  : First : Last  : Anl\n");
  for (int i = 0; i < _lastLexeme; ++i) {
    const Lexeme& lexeme = _lexemes[i];
    printf(" ----  %3d / %4d  : %4d  : %4d  : %4d  : %4d  : %4d\n", i, lexeme.Start, lexeme.Type,
           lexeme.Size, lexeme.First, lexeme.Last, lexeme.Anl);
    for (int op = lexeme.First; op != -1 && op <= lexeme.Last; ++op) {
      const CharacterOperation& rule = _operations[op];
      printf("     +++  %2d / %2d : %c : %c\n", op, rule.Type, static_cast<char>(rule.First),
             static_cast<char>(rule.Last));
    }
  }
  printf(" ------------------------------------------\n");
  fflush(stdout);
}

}  // namespace vor
