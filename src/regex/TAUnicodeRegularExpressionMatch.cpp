#include <unistd.h>

#include <algorithm>
#include <climits>
#include <new>

#include "regex/TAUnicodeRegularExpression.h"

// One match of the compiled filter.  Positions count in the text without the blanks around it.
//
// The search goes back to the latest variable lexeme only.  Such a lexeme keeps in Anl where its
// part of the text ends, and an Anl that was set is never taken back: once tried, a repeated block
// is asked for at least one character whenever it is reached again.  So what it was refused once at
// some position it is refused for the rest of the match, and a table of what was asked keeps the
// work of filters such as "[a]*[a]*[a]*[a]*b" from growing with a power of the length.
class TAUnicodeRegularExpression::Walk {
 public:
  Walk(TAUnicodeRegularExpression& filter, const VorUnicodeString& subject);

  bool Matches();

 private:
  enum Outcome { GoOn, GoBack, Accept, Refuse };

  Outcome Step();
  Outcome TakeLiteral(Slot& lexeme);
  Outcome TakeAnyRun(Slot& lexeme);
  Outcome TakeRepeatedBlock(Slot& lexeme);
  Outcome TakeCountedBlock(const Slot& lexeme);
  bool GoBackToVariable();

  bool MayFollow(const Slot& lexeme, int position) const;
  bool Passes(const Slot& block, int position) const {
    const char32_t c = _text[position];
    return c < kAsciiEnd ? block.ascii.Has(c) : PassesBeyondAscii(block, c);
  }
  bool PassesBeyondAscii(const Slot& block, char32_t c) const;
  bool IsAskedFirst(int position);

  const TAUnicodeRegularExpression& _filter;
  const char32_t* const _pattern;  // the filter
  const char32_t* const _given;    // the text as given
  Slot* const _lexemes;
  const int _last;        // the closing lexeme, which takes no part
  const char32_t* _text;  // without the blanks around it
  int _end;               // its length
  int _lexeme = 0;
  int _position = 0;  // may be behind the end, after a negated block with a count

  int _allowance;                           // questions to repeated blocks before the table is made
  std::unique_ptr<std::uint64_t[]> _asked;  // a bit for each lexeme and position
};

namespace {

constexpr char32_t kBlank = U' ';
constexpr std::size_t kMostAsked = 1 << 27;  // bits that a table may take, 16 MB

[[noreturn]] void SleepForGood() {
  for (;;) pause();
}

}  // namespace

TAUnicodeRegularExpression::Walk::Walk(TAUnicodeRegularExpression& filter,
                                       const VorUnicodeString& subject)
    : _filter(filter),
      _pattern(filter._filter.GetCodePoints()),
      _given(subject.GetCodePoints()),
      _lexemes(filter._lexemes.Get()),
      _last(filter._lastLexeme),
      _text(_given),
      _end(subject.GetLengthInChar()) {
  while (_end > 0 && _text[_end - 1] == kBlank) --_end;
  while (_end > 0 && *_text == kBlank) {
    ++_text;
    --_end;
  }
  _allowance = _end > INT_MAX - _last ? INT_MAX : _end + _last;
  for (int i = 0; i < _last; ++i) _lexemes[i].Anl = -1;
}

bool TAUnicodeRegularExpression::Walk::Matches() {
  while (_lexeme < _last || _position < _end) {
    const Outcome outcome = Step();
    if (outcome == Accept) return true;
    if (outcome == Refuse) return false;
    if (outcome == GoBack && !GoBackToVariable()) return false;
  }
  return true;
}

TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::Step() {
  if (_lexeme >= _last) return GoBack;
  Slot& lexeme = _lexemes[_lexeme];
  if (_position >= _end && lexeme.Size != kVariable) return GoBack;
  switch (lexeme.Type) {
    case Literal:
      return TakeLiteral(lexeme);
    case AnyRun:
      return TakeAnyRun(lexeme);
    case Block:
    case NegatedBlock:
      return lexeme.Size == kVariable ? TakeRepeatedBlock(lexeme) : TakeCountedBlock(lexeme);
    default:
      SleepForGood();  // callers rely on a "." not being passed
  }
}

// Compares with the text as given, while positions do not count the blanks before it: callers rely
// on blanks before a text keeping literals from matching.
TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeLiteral(
    Slot& lexeme) {
  if (lexeme.Size > _end - _position) return GoBack;
  const char32_t* const literal = _pattern + lexeme.Start;
  if (!std::equal(literal, literal + lexeme.Size, _given + _position)) return GoBack;
  lexeme.Anl = _position;
  _position += lexeme.Size;
  ++_lexeme;
  return GoOn;
}

TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeAnyRun(
    Slot& lexeme) {
  const int behind = _lexeme + 1;
  if (behind == _last) return Accept;
  if (lexeme.Anl != -1) {
    if (lexeme.Anl >= _end) return Refuse;  // nothing that follows gets more by going past the end
    _position = lexeme.Anl + 1;
  }
  const Slot& next = _lexemes[behind];
  if (next.Type == Literal) {
    const int start = _position;
    const char32_t first = _pattern[next.Start];
    while (_position < _end && _text[_position] != first) ++_position;
    // The room is counted from where the run starts, not from what was found.
    if (_position >= _end || next.Size > _end - start) return Refuse;
  } else {
    for (; !MayFollow(next, _position); ++_position) {
      if (_position >= _end) return Refuse;
    }
  }
  lexeme.Anl = _position;
  _lexeme = behind;
  return GoOn;
}

TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeRepeatedBlock(
    Slot& lexeme) {
  const Slot& next = _lexemes[_lexeme + 1];
  if (lexeme.Anl != -1) {
    do {
      // Past the end there is no character to take, for a negated block either.
      if (_position >= _end || !Passes(lexeme, _position) || !IsAskedFirst(_position)) {
        return GoBack;
      }
      ++_position;
    } while (!MayFollow(next, _position));
  }
  lexeme.Anl = _position;
  ++_lexeme;
  return GoOn;
}

TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeCountedBlock(
    const Slot& lexeme) {
  const int left = _end - _position;
  // A place past the end passes no operation, which is what a negated block asks for.
  if (lexeme.Size > left && lexeme.Type == Block) return GoBack;
  for (int i = 0; i < lexeme.Size && i < left; ++i) {
    if (!Passes(lexeme, _position + i)) return GoBack;
  }
  _position = lexeme.Size > INT_MAX - _position ? INT_MAX : _position + lexeme.Size;
  ++_lexeme;
  return GoOn;
}

// Leaves the lexeme at which the walk failed as it is; those on the way back count as not tried.
bool TAUnicodeRegularExpression::Walk::GoBackToVariable() {
  while (--_lexeme >= 0) {
    Slot& lexeme = _lexemes[_lexeme];
    if (lexeme.Size == kVariable) {
      _position = lexeme.Anl;
      return true;
    }
    lexeme.Anl = -1;
  }
  return false;
}

// False only if a lexeme behind a variable one would fail at once and send the walk back there.
bool TAUnicodeRegularExpression::Walk::MayFollow(const Slot& lexeme, int position) const {
  if (&lexeme == _lexemes + _last) return position >= _end;
  if (lexeme.Type == AnyRun || lexeme.Size == 0) return true;
  if (lexeme.Size == kVariable && lexeme.Anl == -1) return true;
  if (position >= _end) return false;
  if (lexeme.Type == Literal) return _pattern[lexeme.Start] == _given[position];
  return lexeme.Type == AnyCharacter || Passes(lexeme, position);
}

bool TAUnicodeRegularExpression::Walk::PassesBeyondAscii(const Slot& block, char32_t c) const {
  bool isMember = false;
  for (int op = block.First; op <= block.Last && !isMember; ++op) {
    isMember = _filter._checkCharacterRule(c, op) != 0;
  }
  return isMember == (block.Type == Block);
}

// Whether the current lexeme is asked for the character at position for the first time, as far as
// is known: while there are few questions nobody takes notes.
bool TAUnicodeRegularExpression::Walk::IsAskedFirst(int position) {
  if (_allowance > 0) {
    --_allowance;
    return true;
  }
  const auto row = static_cast<std::size_t>(_end);
  if (_asked == nullptr) {
    const std::size_t bits = static_cast<std::size_t>(_last) * row;
    if (bits <= kMostAsked) _asked.reset(new (std::nothrow) std::uint64_t[bits / 64 + 1]());
    if (_asked == nullptr) {
      _allowance = INT_MAX;
      return true;
    }
  }
  const std::size_t bit =
      static_cast<std::size_t>(_lexeme) * row + static_cast<std::size_t>(position);
  std::uint64_t& word = _asked[bit / 64];
  const std::uint64_t mask = 1ull << (bit % 64);
  if ((word & mask) != 0) return false;
  word |= mask;
  return true;
}

bool TAUnicodeRegularExpression::_matches(const VorUnicodeString& subject) {
  return Walk(*this, subject).Matches();
}
