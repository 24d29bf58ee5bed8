#include <unistd.h>

#include <algorithm>
#include <climits>
#include <limits>
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

  // Where a lexeme behind a variable one has a chance.
  enum Place { Anywhere, AtItsBeginning, AtTheEnd };
  Place PlaceFor(const Slot& lexeme) const;

  // Whether c is in a block or begins a literal.
  bool Begins(const Slot& lexeme, char32_t c) const {
    return c < kAsciiEnd ? lexeme.ascii.Has(c) : BeginsBeyondAscii(lexeme, c);
  }
  bool BeginsBeyondAscii(const Slot& lexeme, char32_t c) const;
  int SkipAll(AsciiSet set, int from) const;
  int FindBeginning(const Slot& block, int from) const;

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

  std::int64_t _allowance;                  // questions to repeated blocks before notes are taken
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
  _allowance = 2 * (static_cast<std::int64_t>(_end) + _last);
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
  int end = _position;
  if (next.Type == Literal) {
    const char32_t first = _pattern[next.Start];
    while (end < _end && _text[end] != first) ++end;
    // The room is counted from where the run starts, not from what was found.
    if (end >= _end || next.Size > _end - _position) return Refuse;
  } else if (PlaceFor(next) == AtItsBeginning) {
    end = FindBeginning(next, end);
    if (end >= _end) return Refuse;
  }
  lexeme.Anl = _position = end;
  _lexeme = behind;
  return GoOn;
}

// Grows by one character and then as long as the next lexeme would only send the walk back here.
TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeRepeatedBlock(
    Slot& lexeme) {
  if (lexeme.Anl == -1) {
    lexeme.Anl = _position;
    ++_lexeme;
    return GoOn;
  }
  const Slot& next = _lexemes[_lexeme + 1];
  const Place place = PlaceFor(next);
  const char32_t* const seenByNext = next.Type == Literal ? _given : _text;
  const auto mayFollow = [&](int position) {
    if (position >= _end) return place != AtItsBeginning;
    return place == Anywhere || (place == AtItsBeginning && Begins(next, seenByNext[position]));
  };
  const bool takesNotes = _allowance < _end - _position;
  AsciiSet goesOn;  // what is taken where the next lexeme has no chance
  if (place != Anywhere && !takesNotes && seenByNext == _text) {
    goesOn = lexeme.ascii;
    if (place == AtItsBeginning) goesOn.Remove(next.ascii);
  }
  bool isFollowed = false;
  int end = _position;
  // Past the end there is no character to take, for a negated block either.
  while (!isFollowed && end < _end && Begins(lexeme, _text[end]) &&
         (!takesNotes || IsAskedFirst(end))) {
    end = SkipAll(goesOn, end + 1);
    isFollowed = mayFollow(end);
  }
  _allowance -= end - _position + 1;
  if (!isFollowed) return GoBack;
  lexeme.Anl = _position = end;
  ++_lexeme;
  return GoOn;
}

TAUnicodeRegularExpression::Walk::Outcome TAUnicodeRegularExpression::Walk::TakeCountedBlock(
    const Slot& lexeme) {
  const int left = _end - _position;
  // A place past the end passes no operation, which is what a negated block asks for.
  if (lexeme.Size > left && lexeme.Type == Block) return GoBack;
  for (int i = 0; i < lexeme.Size && i < left; ++i) {
    if (!Begins(lexeme, _text[_position + i])) return GoBack;
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

TAUnicodeRegularExpression::Walk::Place TAUnicodeRegularExpression::Walk::PlaceFor(
    const Slot& lexeme) const {
  if (&lexeme == _lexemes + _last) return AtTheEnd;
  const bool isUntried = lexeme.Size == kVariable && lexeme.Anl == -1;
  const bool takesAny = lexeme.Type == AnyRun || lexeme.Type == AnyCharacter || lexeme.Size == 0;
  return isUntried || takesAny ? Anywhere : AtItsBeginning;
}

bool TAUnicodeRegularExpression::Walk::BeginsBeyondAscii(const Slot& lexeme, char32_t c) const {
  if (lexeme.Type == Literal) return _pattern[lexeme.Start] == c;
  bool isMember = false;
  for (int op = lexeme.First; op <= lexeme.Last && !isMember; ++op) {
    isMember = _filter._checkCharacterRule(c, op) != 0;
  }
  return isMember == (lexeme.Type == Block);
}

// The first position from \a from on that is not in \a set; the end or more if there is none.
int TAUnicodeRegularExpression::Walk::SkipAll(AsciiSet set, int from) const {
  const char32_t* const text = _text;
  const int end = _end;
  while (from < end && text[from] < kAsciiEnd && set.Has(text[from])) ++from;
  return from;
}

// The first position from \a from on that the block takes; the end or more if there is none.
int TAUnicodeRegularExpression::Walk::FindBeginning(const Slot& block, int from) const {
  AsciiSet others = block.ascii;
  others.Invert();
  for (;; ++from) {
    from = SkipAll(others, from);
    if (from >= _end || Begins(block, _text[from])) return from;
  }
}

// Whether the current repeated block is asked for the character at position for the first time, as
// far as the notes tell, and notes the question.
bool TAUnicodeRegularExpression::Walk::IsAskedFirst(int position) {
  const auto row = static_cast<std::size_t>(_end);
  if (_asked == nullptr) {
    const std::size_t bits = static_cast<std::size_t>(_last) * row;
    if (bits <= kMostAsked) _asked.reset(new (std::nothrow) std::uint64_t[bits / 64 + 1]());
    if (_asked == nullptr) {
      _allowance = std::numeric_limits<std::int64_t>::max();  // then without
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
  Walk walk(*this, subject);  // for an empty text too: where lexemes were tried is forgotten
  return subject.IsNull() == 0 && walk.Matches();
}
