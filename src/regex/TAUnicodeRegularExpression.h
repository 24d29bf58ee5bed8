#ifndef VOR_REGEX_TAUNICODEREGULAREXPRESSION_H
#define VOR_REGEX_TAUNICODEREGULAREXPRESSION_H

#include <cstdint>
#include <memory>

#include "base/Export.h"
#include "base/VorUnicodeChar.h"
#include "base/VorUnicodeString.h"
#include "containers/VorHashSCMap.h"

/// What TAUnicodeRegularExpression::SetFilter does about results; any value but 0 is URE_NoCache.
enum URE_type : int {
  URE_Cache = 0,    ///< remember the result of each text tested under this filter
  URE_NoCache = 1,  ///< match afresh each time, unless the filter was set with URE_Cache before
};

/// A filter that accepts or refuses whole Unicode texts.
///
/// The language is one of its own, between file-name wildcards and regular expressions:
///
///     *             any run of characters, empty too; does not repeat what is before it
///     .             any one character, but see CheckFromFilter
///     [a-z_]        one character of the set: characters and ranges by code point
///     [:digit:_]    classes stand in the same brackets: alnum alpha cntrl digit graph lower
///                   print punct space upper, which know all of Unicode
///     [^a-z]        one character that is not in the set
///     [a-z]*        zero or more characters of the set
///     [a-z]\{3\}    exactly three; heard only if at least one more character follows it
///
/// Everything else is literal, also the backslash and, outside a block, "]".  There is no escape:
/// inside brackets only, "*", "." and "[" stand for themselves.  Letters are never folded.
///
/// Blanks around a filter and around a tested text do not count, but see CheckFromFilter.  A filter
/// is compiled when it is set, and never refused: a block without its end goes to the end of the
/// filter, and an empty count, or one too large for an int, is one.  A class name that is unknown,
/// ":xdigit:" among them, or a count that is no number ends its block, which then accepts no
/// character, or any if negated; the filter goes on outside brackets with the second character of
/// that name or count.
///
/// Ownership: keeps copies of filters and texts.  Results are remembered by filter and text for the
///            life of the object; that memory only grows.  Copies compile afresh and start with
///            nothing remembered.
/// Errors:    nothing is thrown.  SetFilter reports missing memory for the compiled form; without
///            memory for a copy of a text or for a new set of results the process ends, and a
///            result that there is no memory for is not remembered, of which the map prints a line.
/// Threads:   distinct objects are independent; matching changes the object, so one object must not
///            be used by two threads at once.
class VOR_API TAUnicodeRegularExpression {
 public:
  /// As SetFilter with URE_Cache; a null or empty \a filter is "*".
  TAUnicodeRegularExpression(const char* filter);
  TAUnicodeRegularExpression(const VorUnicodeString& filter);
  /// Sets the filter that other.GetFilter() gives; so the copy of one of blanks only is "*".
  TAUnicodeRegularExpression(const TAUnicodeRegularExpression& other);
  /// The same; the results that were remembered here stay.
  TAUnicodeRegularExpression& operator=(const TAUnicodeRegularExpression& other);
  ~TAUnicodeRegularExpression();

  /// Compiles \a filter without the blanks around it; an empty one becomes "*", and one of blanks
  /// only accepts nothing.
  ///
  /// Results are remembered under the filter as given and looked up under the filter without
  /// blanks around it, so one that is given with such blanks is matched afresh each time, unless it
  /// was set without them before.
  ///
  /// Returns 0; 1 if there was no memory, the object must then not be asked until another filter is
  /// set.
  int SetFilter(const VorUnicodeString& filter, URE_type type);

  /// The filter without the blanks around it.
  VorUnicodeString GetFilter() const { return _filter; }

  /// 1 if the filter accepts all of \a subject, without the blanks around it; else 0.  An empty
  /// text is never accepted, one of blanks only may be.
  ///
  /// Never returns if a "." outside brackets is reached while characters are left; the thread then
  /// sleeps for good.
  ///
  /// Variable parts start empty and grow by one character at a time, the latest first.  Callers
  /// rely on what is particular to this search:
  ///  - literal text is compared with \a subject as given, at positions that do not count the
  ///    blanks before it: "abc" refuses " abc";
  ///  - a repeated block that was tried before does not go back to the empty run when something
  ///    before it has grown: "*[a]*" refuses "b";
  ///  - when "*" has no place left for the literal text behind it, nothing else is tried;
  ///  - a negated block with a count takes places past the end of the text.
  int CheckFromFilter(const VorUnicodeString& subject);

  /// 1 if \a c passes the character operation \a op (0-based) of the compiled filter; 0 if not, and
  /// where there is no such operation.
  int _checkCharacterRule(const VorUnicodeChar& c, int op) const;

  /// Prints the compiled form on standard output and flushes it.  The closing lexeme is not listed,
  /// and the count is one too low for that reason; readers of the dump rely on both.  Where lexemes
  /// were tried (Anl) is left from the last match and tells nothing else.
  void _print() const;

 private:
  class Walk;  // one match

  enum LexemeType { EndMark = -1, Literal, AnyRun, AnyCharacter, Block, NegatedBlock };
  static constexpr int kVariable = -1;

  struct Lexeme {
    int Start;  // of its text in _filter, 0-based
    int Type;
    int Size;   // characters that it takes, or kVariable
    int First;  // its operations, blocks only; else -1
    int Last;
    int Anl;  // where it was last tried in the text; -1: not yet.  For one match only
  };

  enum OperationType { Equal, InRange, FirstClass, LastClass = FirstClass + 10 };

  struct CharacterOperation {
    int Type = -1;
    VorUnicodeChar First;
    VorUnicodeChar Last;
  };

  static constexpr char32_t kAsciiEnd = 128;

  // A set of characters below kAsciiEnd.
  struct AsciiSet {
    void Add(char32_t first, char32_t last);
    void Remove(const AsciiSet& other) {
      for (int i : {0, 1}) bits[i] &= ~other.bits[i];
    }
    void Invert() {
      for (std::uint64_t& word : bits) word = ~word;
    }
    bool Has(char32_t c) const { return ((c < 64 ? bits[0] : bits[1]) >> (c % 64) & 1) != 0; }
    std::uint64_t bits[2] = {0, 0};
  };

  struct Slot : Lexeme {
    AsciiSet ascii;  // what it may begin with, blocks and literals only
  };

  // Room for 64 elements at first, then twice as many each time.
  template <typename T>
  class GrowingArray {
   public:
    /// Makes sure of an element with index \a last; false if there is no memory for it.
    bool MakeRoom(int last);
    int Capacity() const { return _capacity; }
    T* Get() { return _elements.get(); }
    T& operator[](int index) { return _elements.get()[index]; }
    const T& operator[](int index) const { return _elements.get()[index]; }

   private:
    int _capacity = 0;
    std::unique_ptr<T[]> _elements;
  };

  int _compile();
  int _addLexeme(int start, int type);
  int _addCharacterOperation(int type);
  int _decodeToken(int& pos);
  int _decodeFilteringBlock(int& pos);
  int _decodeCharacterRule(int& pos);
  int _decodeRepetition(int& pos);
  bool _startsWith(int pos, const char* text) const;
  AsciiSet _beginningOf(const Lexeme& lexeme) const;
  VorHashSCMap* _resultsOf(const VorUnicodeString& filter);
  bool _matches(const VorUnicodeString& subject);

  VorUnicodeString _filter;
  int _length = 0;  // of _filter
  // By filter: a VorHashSCMap by text of results, which are int cells of malloc.
  VorHashSCMap _cache{nullptr};
  int _lastLexeme = -1;
  GrowingArray<Slot> _lexemes;
  int _lastOperation = -1;
  GrowingArray<CharacterOperation> _operations;
  VorHashSCMap* _results = nullptr;  // of _filter in _cache; null: not remembered
};

#endif  // VOR_REGEX_TAUNICODEREGULAREXPRESSION_H
