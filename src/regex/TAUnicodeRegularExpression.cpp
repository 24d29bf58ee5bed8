#include "regex/TAUnicodeRegularExpression.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <climits>
#include <new>

namespace {

constexpr VorUnicodeChar kBlank(' ');
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

// In the order of the operation types.  ":xdigit:" is refused like any unknown name, and filters
// rely on what it reads as then, so its operation is never made.
constexpr int kNameLength = 6;
constexpr const char* kClassNames[] = {"alnum:", "alpha:", "cntrl:", "digit:", "graph:",
                                       "lower:", "print:", "punct:", "space:", "upper:"};

using ClassTest = int (VorUnicodeChar::*)() const;
constexpr ClassTest kClassTests[] = {
    &VorUnicodeChar::IsAlnum, &VorUnicodeChar::IsAlpha, &VorUnicodeChar::IsCntrl,
    &VorUnicodeChar::IsDigit, &VorUnicodeChar::IsGraph, &VorUnicodeChar::IsLower,
    &VorUnicodeChar::IsPrint, &VorUnicodeChar::IsPunct, &VorUnicodeChar::IsSpace,
    &VorUnicodeChar::IsUpper, &VorUnicodeChar::IsXDigit};
constexpr int kClasses = static_cast<int>(std::size(kClassTests));

// Keys of the cache end at a NUL: a text that holds one could be taken for another there.
bool HoldsNul(const VorUnicodeString& text) {
  return !(text == text.CastToCharPtr());
}

// Whether \a map holds the value now, be it under a key that there was no memory to copy.
bool Add(VorHashSCMap& map, const char* key, void* value) {
  const int size = map.getSize();
  map.insert(key, value);
  return map.getSize() > size;
}

}  // namespace

template <typename T>
bool TAUnicodeRegularExpression::GrowingArray<T>::MakeRoom(int last) {
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

TAUnicodeRegularExpression::TAUnicodeRegularExpression(const char* filter) {
  SetFilter(filter == nullptr ? "*" : filter, URE_Cache);
}

TAUnicodeRegularExpression::TAUnicodeRegularExpression(const VorUnicodeString& filter) {
  SetFilter(filter.GetLengthInChar() < 1 ? VorUnicodeString("*") : filter, URE_Cache);
}

TAUnicodeRegularExpression::TAUnicodeRegularExpression(const TAUnicodeRegularExpression& other) {
  SetFilter(other.GetFilter(), URE_Cache);
}

TAUnicodeRegularExpression& TAUnicodeRegularExpression::operator=(
    const TAUnicodeRegularExpression& other) {
  SetFilter(other.GetFilter(), URE_Cache);
  return *this;
}

TAUnicodeRegularExpression::~TAUnicodeRegularExpression() {
  const std::unique_ptr<VorMapIterator> filters(_cache.getIterator());
  while (filters != nullptr && filters->next() != 0) {
    const std::unique_ptr<VorHashSCMap> results(static_cast<VorHashSCMap*>(filters->getValue()));
    const std::unique_ptr<VorMapIterator> texts(results->getIterator());
    while (texts != nullptr && texts->next() != 0) free(texts->getValue());
  }
}

int TAUnicodeRegularExpression::SetFilter(const VorUnicodeString& filter, URE_type type) {
  _filter = filter.IsNull() ? VorUnicodeString("*") : filter.Strip(VorUnicodeString::Both, kBlank);
  _length = _filter.GetLengthInChar();
  _results = nullptr;
  if (_compile() != 0) {
    _lastLexeme = -1;  // so that nothing walks over what is not there
    return 1;
  }
  if (type == URE_Cache && !HoldsNul(filter) && _resultsOf(filter) == nullptr) {
    std::unique_ptr<VorHashSCMap> results(new (std::nothrow) VorHashSCMap(nullptr));
    if (results == nullptr || !Add(_cache, filter, results.get())) return 1;
    results.release();
  }
  if (!HoldsNul(_filter)) _results = _resultsOf(_filter);
  return 0;
}

int TAUnicodeRegularExpression::_compile() {
  _lastOperation = -1;
  _lastLexeme = -1;
  // Each token opens the lexeme of the next one, so a filter ends with an empty literal lexeme.
  int pos = 0;
  if (_addLexeme(pos, Literal) != 0) return 1;
  do {
    if (_decodeToken(pos) != 0 || _addLexeme(pos, Literal) != 0) return 1;
  } while (pos < _length);
  if (_lexemes[_lastLexeme].Start < _length && _addLexeme(_length, EndMark) != 0) return 1;

  for (int i = 0; i <= _lastLexeme; ++i) {
    Slot& lexeme = _lexemes[i];
    if (lexeme.Type == Literal) {
      lexeme.Size = (i < _lastLexeme ? _lexemes[i + 1].Start : _length) - lexeme.Start;
    }
    lexeme.ascii = _beginningOf(lexeme);
  }
  return 0;
}

int TAUnicodeRegularExpression::_addLexeme(int start, int type) {
  ++_lastLexeme;
  if (!_lexemes.MakeRoom(_lastLexeme)) return 1;
  _lexemes[_lastLexeme] = {{start, type, kVariable, -1, -1, -1}, {}};
  return 0;
}

int TAUnicodeRegularExpression::_addCharacterOperation(int type) {
  ++_lastOperation;
  if (!_operations.MakeRoom(_lastOperation)) return 1;
  _operations[_lastOperation] = {type, {}, {}};
  return 0;
}

// Decodes one token and moves pos behind it.  Returns 1 only if there was no memory.
int TAUnicodeRegularExpression::_decodeToken(int& pos) {
  const auto isSpecial = [](VorUnicodeChar c) {
    return c == kStar || c == kDot || c == kOpenBlock;
  };
  const VorUnicodeChar c = _filter[pos];
  if (c == kOpenBlock) {
    _decodeFilteringBlock(pos);  // what is malformed goes on as text
    ++pos;
    return _lastOperation < _operations.Capacity() ? 0 : 1;
  }
  if (isSpecial(c)) {
    const int type = c == kStar ? AnyRun : AnyCharacter;
    Lexeme& current = _lexemes[_lastLexeme];
    if (current.Start != pos) return _addLexeme(pos++, type);
    current.Type = type;
    current.Size = type == AnyRun ? kVariable : 1;
    ++pos;
    return 0;
  }
  static_cast<Lexeme&>(_lexemes[_lastLexeme]) = {pos, Literal, kVariable, -1, -1, -1};
  while (pos < _length && !isSpecial(_filter[pos])) ++pos;
  return 0;
}

// Decodes the block at pos into the current lexeme and leaves pos at its last character.  Returns 1
// for a malformed one, whose lexeme then has no operations.
int TAUnicodeRegularExpression::_decodeFilteringBlock(int& pos) {
  Lexeme& block = _lexemes[_lastLexeme];
  block = {pos, Block, 1, _lastOperation + 1, -1, -1};
  ++pos;
  if (_filter[pos] == kCaret) {
    block.Type = NegatedBlock;
    ++pos;
  }
  while (pos < _length && _filter[pos] != kCloseBlock) {
    if (_decodeCharacterRule(pos) != 0) return 1;
  }
  if (_decodeRepetition(pos) != 0) return 1;
  block.Last = _lastOperation;
  return 0;
}

int TAUnicodeRegularExpression::_decodeCharacterRule(int& pos) {
  if (_addCharacterOperation(-1) != 0) return 1;
  CharacterOperation& rule = _operations[_lastOperation];
  rule.First = _filter[pos++];
  if (rule.First == kColon) {
    const auto name = std::find_if(std::begin(kClassNames), std::end(kClassNames),
                                   [&](const char* text) { return _startsWith(pos, text); });
    if (name == std::end(kClassNames)) return 1;
    rule.Type = FirstClass + static_cast<int>(name - kClassNames);
    pos += kNameLength;
    return 0;
  }
  rule.Type = Equal;
  if (_filter[pos] == kDash && _filter[pos + 1] != kCloseBlock) {
    // The upper bound stays to be read again as a character of its own, which shows in the dump.
    rule.Type = InRange;
    rule.Last = _filter[++pos];
  }
  return 0;
}

// Decodes what may follow the end of a block at pos.
int TAUnicodeRegularExpression::_decodeRepetition(int& pos) {
  Lexeme& block = _lexemes[_lastLexeme];
  if (pos < _length - 1 && _filter[pos + 1] == kStar) {
    ++pos;
    block.Size = kVariable;
    return 0;
  }
  if (pos >= _length - 2 || _filter[pos + 1] != kBackslash || _filter[pos + 2] != kOpenCount) {
    return 0;
  }
  pos += 3;
  // Filters rely on a count at their very end not being heard: its block takes one character, and
  // the end of the count is literal text.
  for (int end = pos; end < _length - 2; ++end) {
    if (_filter[end] == kBackslash && _filter[end + 1] == kCloseCount) {
      _filter.SubString(pos, end - pos).ConvertToNum(&block.Size, "%d");
      pos = end + 1;
      return 0;
    }
    if (_filter[end].IsDigit() == 0) return 1;
  }
  return 0;
}

bool TAUnicodeRegularExpression::_startsWith(int pos, const char* text) const {
  for (; *text != '\0'; ++text, ++pos) {
    if (_filter[pos] != *text) return false;
  }
  return true;
}

void TAUnicodeRegularExpression::AsciiSet::Add(char32_t first, char32_t last) {
  for (char32_t c = first; c <= last && c < kAsciiEnd; ++c) bits[c / 64] |= 1ull << (c % 64);
}

TAUnicodeRegularExpression::AsciiSet TAUnicodeRegularExpression::_beginningOf(
    const Lexeme& lexeme) const {
  struct Classes {
    Classes() {
      for (int k = 0; k < kClasses; ++k) {
        for (char32_t c = 0; c < kAsciiEnd; ++c) {
          if ((VorUnicodeChar(c).*kClassTests[k])() != 0) sets[k].Add(c, c);
        }
      }
    }
    AsciiSet sets[kClasses];
  };
  static const Classes classes;

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
      const AsciiSet& members = classes.sets[rule.Type - FirstClass];
      set.bits[0] |= members.bits[0];
      set.bits[1] |= members.bits[1];
    }
  }
  if (lexeme.Type == NegatedBlock) set.Invert();
  return set;
}

int TAUnicodeRegularExpression::_checkCharacterRule(const VorUnicodeChar& c, int op) const {
  if (op < 0 || op > _lastOperation || op >= _operations.Capacity()) return 0;
  const CharacterOperation& rule = _operations[op];
  if (rule.Type == Equal) return c == rule.First ? 1 : 0;
  if (rule.Type == InRange) return c >= rule.First && c <= rule.Last ? 1 : 0;
  if (rule.Type < FirstClass || rule.Type > LastClass) return 0;
  return (c.*kClassTests[rule.Type - FirstClass])() != 0 ? 1 : 0;
}

VorHashSCMap* TAUnicodeRegularExpression::_resultsOf(const VorUnicodeString& filter) {
  void* results = nullptr;
  _cache.search(filter, &results);
  return static_cast<VorHashSCMap*>(results);
}

int TAUnicodeRegularExpression::CheckFromFilter(const VorUnicodeString& subject) {
  int* result = nullptr;
  if (_results != nullptr && !HoldsNul(subject)) {
    void* known = nullptr;
    if (_results->search(subject, &known) != 0) return *static_cast<int*>(known);
    result = static_cast<int*>(calloc(1, sizeof(int)));
    if (result != nullptr && !Add(*_results, subject, result)) {
      free(result);
      result = nullptr;  // no memory to remember it
    }
  }
  if (!_matches(subject)) return 0;
  if (result != nullptr) *result = 1;
  return 1;
}

void TAUnicodeRegularExpression::_print() const {
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
