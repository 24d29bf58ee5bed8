#ifndef VOR_REGEX_FILTERPROGRAM_H
#define VOR_REGEX_FILTERPROGRAM_H

#include <cstdint>
#include <limits>
#include <memory>

#include "base/VorUnicodeChar.h"
#include "base/VorUnicodeString.h"

namespace vor {

/// A set of characters below 128.
struct AsciiSet {
  static constexpr char32_t kEnd = 128;

  constexpr void Add(char32_t first, char32_t last) {
    for (char32_t c = first; c <= last && c < kEnd; ++c) bits[c / 64] |= 1ull << (c % 64);
  }
  constexpr void Add(const AsciiSet& other) {
    for (int i : {0, 1}) bits[i] |= other.bits[i];
  }
  constexpr void Remove(const AsciiSet& other) {
    for (int i : {0, 1}) bits[i] &= ~other.bits[i];
  }
  constexpr void Invert() {
    for (std::uint64_t& word : bits) word = ~word;
  }
  constexpr bool Has(char32_t c) const {
    return ((c < 64 ? bits[0] : bits[1]) >> (c % 64) & 1) != 0;
  }

  std::uint64_t bits[2] = {0, 0};
};

/// The compiled form of a filter: lexemes that are matched one after the other, and the character
/// operations of those that are blocks.  FilterProgram.cpp describes the form, FilterMatch.cpp the
/// search.
///
/// Threads: a match changes the program, so one program must not be used by two threads at once.
class FilterProgram {
 public:
  /// Compiles \a filter, which must have no blanks around it.  Returns false if there was no
  /// memory; the program then has no lexemes.
  bool Compile(const VorUnicodeString& filter);

  const VorUnicodeString& GetFilter() const { return _filter; }

  enum class Result { kRefused, kAccepted, kStopped };
  static constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

  /// Whether the filter accepts all of \a subject; kStopped if that took more than \a steps.  A
  /// null text is refused.
  Result Match(const VorUnicodeString& subject, std::int64_t steps);

  /// Whether \a c passes the operation \a op (0-based); false if there is no such operation.
  bool Passes(VorUnicodeChar c, int op) const;

  /// Prints the compiled form on standard output and flushes it.
  void Print() const;

 private:
  friend class FilterMatch;

  enum LexemeType { EndMark = -1, Literal, AnyRun, AnyCharacter, Block, NegatedBlock };
  static constexpr int kVariable = -1;

  struct Lexeme {
    int Start;  // of its text in _filter, 0-based
    int Type;
    int Size;   // characters that it takes, or kVariable
    int First;  // its operations, blocks only; else -1
    int Last;

    // For one match only.
    int Anl;     // where it was last tried in the text; -1: not yet
    int passed;  // counted blocks only: end of the characters already found in the set

    AsciiSet ascii;  // blocks and literals only: the ASCII characters that it may begin with
  };

  enum OperationType { Equal, InRange, FirstClass, LastClass = FirstClass + 9 };

  struct CharacterOperation {
    int Type = -1;
    VorUnicodeChar First;
    VorUnicodeChar Last;
  };

  // Has room for 64 elements at first and doubles it when it is full.
  template <typename T>
  class GrowingArray {
   public:
    /// Ensures that there is an element with index \a last; false if there is no memory for it.
    bool MakeRoom(int last);
    int Capacity() const { return _capacity; }
    T* Get() { return _elements.get(); }
    T& operator[](int index) { return _elements.get()[index]; }
    const T& operator[](int index) const { return _elements.get()[index]; }

   private:
    int _capacity = 0;
    std::unique_ptr<T[]> _elements;
  };

  bool CompileLexemes();
  bool AddLexeme(int start, int type);
  bool AddCharacterOperation(int type);
  bool DecodeToken(int& pos);
  bool DecodeBlock(int& pos);
  bool DecodeCharacterRule(int& pos);
  bool DecodeRepetition(int& pos);
  bool StartsWith(int pos, const char* text) const;
  AsciiSet BeginningOf(const Lexeme& lexeme) const;

  VorUnicodeString _filter;
  int _length = 0;  // of _filter
  int _lastLexeme = -1;
  GrowingArray<Lexeme> _lexemes;
  int _lastOperation = -1;
  GrowingArray<CharacterOperation> _operations;
};

}  // namespace vor

#endif  // VOR_REGEX_FILTERPROGRAM_H
