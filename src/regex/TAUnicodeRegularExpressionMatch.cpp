#include <unistd.h>

#include <climits>
#include <new>

#include "regex/TAUnicodeRegularExpression.h"

// One match of the compiled filter.  Positions count in the text without the blanks around it; the
// text as given begins _blanks characters earlier.
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

  bool Passes(const Slot& block, int position) const;
  bool IsAskedFirst(int position);
  VorUnicodeChar At(int position) const { return _subject[_blanks + position]; }

  TAUnicodeRegularExpression& _filter;
  const VorUnicodeString& _subject;
  Slot* const _lexemes;
  const int _last;  // the closing lexeme, which takes no part
  int _blanks = 0;
  int _end;  // length of the text without the blanks around it
  int _lexeme = 0;
  int _position = 0;  // may be behind the end, after a negated block with a count

  int _allowance;                           // questions to repeated blocks before the table is made
  std::unique_ptr<std::uint64_t[]> _asked;  // a bit for each lexeme and position
};

namespace {

constexpr VorUnicodeChar kBlank(' ');
constexpr std::int64_t kMostAsked = 1 << 27;  // bits that a table may take, 16 MB

[[noreturn]] void SleepForGood() {
  for (;;) pause();
}

}  // namespace

TAUnicodeRegularExpression::Walk::Walk(TAUnicodeRegularExpression& filter,
                                       const VorUnicodeString& subject)
    : _filter(filter),
      _subject(subject),
      _lexemes(filter._lexemes.get()),
      _last(filter._lastLexeme),
      _end(subject.GetLengthInChar()) {
  while (_end > 0 && subject[_end - 1] == kBlank) --_end;
  while (_blanks < _end && subject[_blanks] == kBlank) ++_blanks;
  _end -= _blanks;
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
  for (int i = 0; i < lexeme.Size; ++i) {
    if (_filter._filter[lexeme.Start + i] != _subject[_position + i]) return GoBack;
  }
  lexeme.Anl = _position;
  _position += lexeme.Size;
  ++_lexeme;
  return GoOn;
}

TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeAnyRun(
    Slot& lexeme) {
  const int behind = _lexeme + 1;
  if (behind == _last) return Accept;
  if (lexeme.Anl == -1) {
    lexeme.Anl = _position;
  } else {
    if (lexeme.Anl >= _end) return Refuse;  // nothing that follows gets more by going past the end
    _position = ++lexeme.Anl;
  }
  _lexeme = behind;
  const Slot& next = _lexemes[behind];
  if (next.Type != Literal) return GoOn;

  const VorUnicodeChar first = _filter._filter[next.Start];
  int found = _position;
  while (found < _end && At(found) != first) ++found;
  // The room is counted from where the run starts, not from what was found.
  if (found >= _end || next.Size > _end - _position) return Refuse;
  _position = lexeme.Anl = found;
  return GoOn;
}

TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeRepeatedBlock(
    Slot& lexeme) {
  if (lexeme.Anl != -1) {
    // Past the end there is no character to take, for a negated block either.
    if (_position >= _end || !Passes(lexeme, _position) || !IsAskedFirst(_position)) return GoBack;
    ++_position;
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

bool TAUnicodeRegularExpression::Walk::Passes(const Slot& block, int position) const {
  const VorUnicodeChar c = At(position);
  bool isMember = false;
  if (c.GetCodePoint() < kAsciiEnd) {
    isMember = block.ascii.Has(c.GetCodePoint());
  } else {
    for (int op = block.First; op <= block.Last && !isMember; ++op) {
      isMember = _filter._checkCharacterRule(c, op) != 0;
    }
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
  if (_asked == nullptr) {
    const std::int64_t bits = static_cast<std::int64_t>(_last) * _end;
    if (bits <= kMostAsked) _asked.reset(new (std::nothrow) std::uint64_t[bits / 64 + 1]());
    if (_asked == nullptr) {
      _allowance = INT_MAX;
      return true;
    }
  }
  const std::int64_t bit = static_cast<std::int64_t>(_lexeme) * _end + position;
  std::uint64_t& word = _asked[bit / 64];
  const std::uint64_t mask = 1ull << (bit % 64);
  if ((word & mask) != 0) return false;
  word |= mask;
  return true;
}

bool TAUnicodeRegularExpression::_matches(const VorUnicodeString& subject) {
  return Walk(*this, subject).Matches();
}
