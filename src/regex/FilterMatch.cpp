// The search of a match.
//
// A match walks over the lexemes from left to right with a position in the text.  A lexeme that
// cannot take the characters there sends the walk back to the latest variable lexeme before it,
// which then takes one character more.  If there is none, the text is refused.
//
// A variable lexeme starts empty.  Anl is the end of the characters that it takes.  It is kept for
// the rest of the match, even if the walk goes back to an earlier lexeme and returns.  Callers rely
// on two consequences:
//
//   - A repeated block that was tried before takes at least one character when it is reached again.
//   - "*" that was tried before continues after its old end when it is reached again.  It never
//     sends the walk back: if it cannot grow, the text is refused.  So the lexemes before a "*"
//     that was reached are never tried again.
//
// Why the work is bounded: a variable lexeme sends the walk on from ascending positions, and the
// lexemes up to the next variable one take a fixed number of characters.  So every lexeme is
// reached at ascending positions.  If a repeated block is reached at a position before its Anl, it
// has tried that position before, and no continuation matched.  It then goes back at once, because
// lexemes that were tried before accept fewer texts, never more.  A block with a count records how
// far it has compared.  So a block looks at each character about once, a literal compares at most
// its own length at each, and a match takes at most about length of the filter x length of the text
// steps.  It needs no memory.

#include <unistd.h>

#include <algorithm>
#include <climits>

#include "regex/FilterProgram.h"

namespace vor {

// One match of the compiled filter.  Positions count in the text without the blanks around it.
class FilterMatch {
 public:
  FilterMatch(FilterProgram& program, const VorUnicodeString& subject, std::int64_t steps);

  FilterProgram::Result Run();

 private:
  using Lexeme = FilterProgram::Lexeme;
  using Result = FilterProgram::Result;
  using enum FilterProgram::LexemeType;
  static constexpr int kVariable = FilterProgram::kVariable;

  enum Outcome { GoOn, GoBack, Accept, Refuse, Stop };

  Outcome Step();
  Outcome TakeLiteral(Lexeme& lexeme);
  Outcome TakeAnyRun(Lexeme& lexeme);
  Outcome TakeRepeatedBlock(Lexeme& lexeme);
  Outcome TakeCountedBlock(Lexeme& lexeme);
  bool GoBackToVariable();

  // The positions at which a lexeme after a variable one can match.
  enum Place { Anywhere, AtItsBeginning, AtTheEnd };
  Place PlaceFor(const Lexeme& lexeme) const;

  // Whether c is in a block or begins a literal.
  bool Begins(const Lexeme& lexeme, char32_t c) const {
    return c < AsciiSet::kEnd ? lexeme.ascii.Has(c) : BeginsBeyondAscii(lexeme, c);
  }
  bool BeginsBeyondAscii(const Lexeme& lexeme, char32_t c) const;
  int SkipAll(AsciiSet set, int from) const;
  int FindBeginning(const Lexeme& block, int from) const;

  const FilterProgram& _program;
  const char32_t* const _pattern;  // the filter
  const char32_t* const _given;    // the text as given
  Lexeme* const _lexemes;
  const int _last;        // the closing lexeme, which takes no part
  const char32_t* _text;  // without the blanks around it
  int _end;               // its length
  int _lexeme = 0;
  int _position = 0;  // can exceed _end after a negated block with a count

  const bool _isLimited;
  std::int64_t _stepsLeft;
};

namespace {

constexpr char32_t kBlank = U' ';

[[noreturn]] void SleepForGood() {
  for (;;) pause();
}

}  // namespace

FilterMatch::FilterMatch(FilterProgram& program, const VorUnicodeString& subject,
                         std::int64_t steps)
    : _program(program),
      _pattern(program._filter.GetCodePoints()),
      _given(subject.GetCodePoints()),
      _lexemes(program._lexemes.Get()),
      _last(program._lastLexeme),
      _text(_given),
      _end(subject.GetLengthInChar()),
      _isLimited(steps != FilterProgram::kNoLimit),
      _stepsLeft(steps) {
  while (_end > 0 && _text[_end - 1] == kBlank) --_end;
  while (_end > 0 && *_text == kBlank) {
    ++_text;
    --_end;
  }
  for (int i = 0; i < _last; ++i) {
    _lexemes[i].Anl = -1;
    _lexemes[i].passed = 0;
  }
}

FilterProgram::Result FilterMatch::Run() {
  while (_lexeme < _last || _position < _end) {
    if (--_stepsLeft < 0) return Result::kStopped;
    const Outcome outcome = Step();
    if (outcome == Accept) return Result::kAccepted;
    if (outcome == Refuse) return Result::kRefused;
    if (outcome == Stop) return Result::kStopped;
    if (outcome == GoBack && !GoBackToVariable()) return Result::kRefused;
  }
  return Result::kAccepted;
}

FilterMatch::Outcome FilterMatch::Step() {
  if (_lexeme >= _last) return GoBack;
  Lexeme& lexeme = _lexemes[_lexeme];
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
      if (_isLimited) return Stop;  // as if it had used up all steps
      SleepForGood();               // callers rely on a "." not being passed
  }
}

// Compares with the text as given, although positions do not count the blanks before it: callers
// rely on such blanks to keep literals from matching.
FilterMatch::Outcome FilterMatch::TakeLiteral(Lexeme& lexeme) {
  if (lexeme.Size > _end - _position) return GoBack;
  _stepsLeft -= lexeme.Size;
  const char32_t* const literal = _pattern + lexeme.Start;
  if (!std::equal(literal, literal + lexeme.Size, _given + _position)) return GoBack;
  lexeme.Anl = _position;
  _position += lexeme.Size;
  ++_lexeme;
  return GoOn;
}

FilterMatch::Outcome FilterMatch::TakeAnyRun(Lexeme& lexeme) {
  const int following = _lexeme + 1;
  if (following == _last) return Accept;
  if (lexeme.Anl != -1) {
    if (lexeme.Anl >= _end) return Refuse;  // after the end no following lexeme can match more
    _position = lexeme.Anl + 1;
  }
  const Lexeme& next = _lexemes[following];
  int end = _position;
  if (next.Type == Literal) {
    const char32_t first = _pattern[next.Start];
    while (end < _end && _text[end] != first) ++end;
    // Callers rely on the room being counted from the start of the run, not from that of the
    // literal.
    if (end >= _end || next.Size > _end - _position) return Refuse;
  } else if (PlaceFor(next) == AtItsBeginning) {
    end = FindBeginning(next, end);
    if (end >= _end) return Refuse;
  }
  _stepsLeft -= end - _position;
  lexeme.Anl = _position = end;
  _lexeme = following;
  return GoOn;
}

// Grows by one character, and then until the next lexeme may match, which would otherwise send the
// walk back here.
FilterMatch::Outcome FilterMatch::TakeRepeatedBlock(Lexeme& lexeme) {
  if (lexeme.Anl == -1) {
    lexeme.Anl = _position;
    ++_lexeme;
    return GoOn;
  }
  if (_position < lexeme.Anl) return GoBack;  // was tried here before
  const Lexeme& next = _lexemes[_lexeme + 1];
  const Place place = PlaceFor(next);
  const char32_t* const seenByNext = next.Type == Literal ? _given : _text;
  const auto mayFollow = [&](int position) {
    if (position >= _end) return place != AtItsBeginning;
    return place == Anywhere || (place == AtItsBeginning && Begins(next, seenByNext[position]));
  };
  AsciiSet goesOn;  // taken without a try of the next lexeme, which cannot match there
  if (place != Anywhere && seenByNext == _text) {
    goesOn = lexeme.ascii;
    if (place == AtItsBeginning) goesOn.Remove(next.ascii);
  }
  bool isFollowed = false;
  int end = _position;
  // After the end there is no character to take, not even for a negated block.
  while (!isFollowed && end < _end && Begins(lexeme, _text[end])) {
    end = SkipAll(goesOn, end + 1);
    isFollowed = mayFollow(end);
  }
  _stepsLeft -= end - _position;
  lexeme.Anl = end;
  if (!isFollowed) return GoBack;
  _position = end;
  ++_lexeme;
  return GoOn;
}

FilterMatch::Outcome FilterMatch::TakeCountedBlock(Lexeme& lexeme) {
  const int left = _end - _position;
  // A position after the end passes no operation, so a negated block accepts it.
  if (lexeme.Size > left && lexeme.Type == Block) return GoBack;
  const int end = _position + std::min(lexeme.Size, left);
  const int start = std::max(_position, lexeme.passed);
  int next = start;
  while (next < end && Begins(lexeme, _text[next])) ++next;
  _stepsLeft -= next - start;
  lexeme.passed = next;
  if (next < end) return GoBack;
  _position = lexeme.Size > INT_MAX - _position ? INT_MAX : _position + lexeme.Size;
  ++_lexeme;
  return GoOn;
}

// Leaves the lexeme at which the walk failed as it is.  Marks those on the way back as not tried.
bool FilterMatch::GoBackToVariable() {
  while (--_lexeme >= 0) {
    Lexeme& lexeme = _lexemes[_lexeme];
    if (lexeme.Size == kVariable) {
      _position = lexeme.Anl;
      return true;
    }
    lexeme.Anl = -1;
  }
  return false;
}

FilterMatch::Place FilterMatch::PlaceFor(const Lexeme& lexeme) const {
  if (&lexeme == _lexemes + _last) return AtTheEnd;
  const bool isUntried = lexeme.Size == kVariable && lexeme.Anl == -1;
  const bool takesAny = lexeme.Type == AnyRun || lexeme.Type == AnyCharacter || lexeme.Size == 0;
  return isUntried || takesAny ? Anywhere : AtItsBeginning;
}

bool FilterMatch::BeginsBeyondAscii(const Lexeme& lexeme, char32_t c) const {
  if (lexeme.Type == Literal) return _pattern[lexeme.Start] == c;
  bool isMember = false;
  for (int op = lexeme.First; op <= lexeme.Last && !isMember; ++op) {
    isMember = _program.Passes(c, op);
  }
  return isMember == (lexeme.Type == Block);
}

// The first position from \a from on that is not in \a set; the end or more if there is none.
int FilterMatch::SkipAll(AsciiSet set, int from) const {
  const char32_t* const text = _text;
  const int end = _end;
  while (from < end && text[from] < AsciiSet::kEnd && set.Has(text[from])) ++from;
  return from;
}

// The first position from \a from on that the block takes; the end or more if there is none.
int FilterMatch::FindBeginning(const Lexeme& block, int from) const {
  AsciiSet others = block.ascii;
  others.Invert();
  for (;; ++from) {
    from = SkipAll(others, from);
    if (from >= _end || Begins(block, _text[from])) return from;
  }
}

FilterProgram::Result FilterProgram::Match(const VorUnicodeString& subject, std::int64_t steps) {
  FilterMatch match(*this, subject, steps);  // resets Anl for a null text too
  return subject.IsNull() != 0 ? Result::kRefused : match.Run();
}

}  // namespace vor
