#ifndef VOR_REGEX_TAUNICODEREGULAREXPRESSION_H
#define VOR_REGEX_TAUNICODEREGULAREXPRESSION_H

#include <memory>

#include "../base/Export.h"
#include "../base/VorUnicodeChar.h"
#include "../base/VorUnicodeString.h"
#include "../containers/VorHashSCMap.h"

namespace vor {
class FilterProgram;
}

/// Whether TAUnicodeRegularExpression::SetFilter remembers results; any value but 0 is URE_NoCache.
enum URE_type : int {
  URE_Cache = 0,    ///< remember the result of each text that is tested with this filter
  URE_NoCache = 1,  ///< match afresh each time, unless the filter was set with URE_Cache before
};

/// A filter that accepts or refuses whole Unicode texts.
///
/// The language is one of its own, between file-name wildcards and regular expressions:
///
///     *             any run of characters, even an empty one; after a block, see below
///     .             any one character, but see CheckFromFilter
///     [a-z_]        one character of the set: characters and ranges by code point
///     [:digit:_]    classes are written in the same brackets: alnum alpha cntrl digit graph lower
///                   print punct space upper; they cover all of Unicode
///     [^a-z]        one character that is not in the set
///     [a-z]*        zero or more characters of the set
///     [a-z]\{3\}    exactly three; ignored unless at least one more character follows it
///
/// Every other character is literal, even the backslash and, outside a block, "]".  There is no
/// escape: "*", "." and "[" stand for themselves only inside brackets.  Case matters.
///
/// Blanks around a filter and around a tested text do not count, but see CheckFromFilter.
///
/// A filter is compiled when it is set.  No filter is refused:
///  - a block without "]" extends to the end of the filter;
///  - an empty count, or one too large for an int, counts as 1;
///  - an unknown class name, ":xdigit:" for instance, or a count that is no number ends its block.
///    That block accepts no character, or every character if it is negated.  The filter continues
///    outside brackets with the second character of the name or count.
///
/// Ownership: keeps copies of filters and texts.  Results are remembered by filter and text until
///            the object is destroyed; their memory only grows.  A copy compiles its filter again
///            and starts with no results.
/// Errors:    nothing is thrown.  SetFilter reports missing memory for the compiled form.  Without
///            memory for a copy of a text or for a new set of results the process ends.  If there
///            is no memory to remember a result, it is dropped and the map prints a line.
/// Threads:   distinct objects are independent.  Matching changes the object, so two threads must
///            not use one object at once.
class VOR_API TAUnicodeRegularExpression {
 public:
  /// As SetFilter with URE_Cache; a null or empty \a filter is "*".
  TAUnicodeRegularExpression(const char* filter) noexcept;
  TAUnicodeRegularExpression(const VorUnicodeString& filter) noexcept;
  /// Sets the filter that other.GetFilter() returns, so the copy of a filter of blanks is "*".  The
  /// limit of steps is copied too.
  TAUnicodeRegularExpression(const TAUnicodeRegularExpression& other) noexcept;
  /// The same; results that this object remembers stay.
  TAUnicodeRegularExpression& operator=(const TAUnicodeRegularExpression& other) noexcept;
  ~TAUnicodeRegularExpression();

  /// Compiles \a filter without the blanks around it.  An empty filter becomes "*"; a filter of
  /// blanks accepts nothing.
  ///
  /// Results are remembered under the filter as given, and looked up under the filter without the
  /// blanks around it.  So a filter given with such blanks is matched afresh each time, unless it
  /// was set without them before.
  ///
  /// Returns 0, or 1 if there was no memory.  After 1, set another filter before the next match.
  int SetFilter(const VorUnicodeString& filter, URE_type type);

  /// The filter without the blanks around it.
  VorUnicodeString GetFilter() const;

  /// 1 if the filter accepts all of \a subject without the blanks around it, else 0.  An empty text
  /// is never accepted; a text of blanks may be.
  ///
  /// Never returns if a "." outside brackets is reached while characters are left: the thread then
  /// sleeps for ever, unless there is a limit of steps.
  ///
  /// "*" and repeated blocks start empty and grow by one character at a time, the latest first.
  /// Callers rely on these properties of the search:
  ///  - Literal text is compared with \a subject as given, at positions that do not count the
  ///    blanks before it: "abc" refuses " abc".
  ///  - A repeated block that was tried before takes at least one character when something before
  ///    it has grown: "*[a]*" refuses "b".
  ///  - If "*" finds no position for the literal text after it, the text is refused at once.
  ///  - A negated block with a count also accepts positions after the end of the text.
  int CheckFromFilter(const VorUnicodeString& subject);

  /// Limits the work of each CheckFromFilter, for filters and texts from untrusted sources.  0 or
  /// less: no limit, which is the default.
  ///
  /// A step is about one comparison of a character with one part of the filter.  Most matches take
  /// a few times the length of the text.  The worst take a small multiple of length of the filter x
  /// length of the text.
  ///
  /// A match that needs more than \a steps returns 0, and IsStepLimitReached then returns 1.  So
  /// does, at once, a match that would otherwise never return because of a ".".  Such results are
  /// not remembered.  A remembered result is returned whatever the limit.
  void SetStepLimit(long long steps) { _stepLimit = steps; }
  long long GetStepLimit() const { return _stepLimit; }

  /// 1 if the last CheckFromFilter stopped at the limit of steps, so that its 0 says nothing about
  /// the text; else 0.
  int IsStepLimitReached() const { return _isStepLimitReached ? 1 : 0; }

  /// 1 if \a c passes the character operation \a op (0-based) of the compiled filter; 0 if not, or
  /// if there is no such operation.
  int _checkCharacterRule(const VorUnicodeChar& c, int op) const;

  /// Prints the compiled form on standard output and flushes it.  Readers of the dump rely on the
  /// closing lexeme being neither listed nor counted.  Column Anl shows where the last match tried
  /// a lexeme; it has no other meaning.
  void _print() const;

 private:
  VorHashSCMap* ResultsOf(const VorUnicodeString& filter);

  const std::unique_ptr<vor::FilterProgram> _program;
  // From filter to a VorHashSCMap, owned, from text to result.
  VorHashSCMap _cache{nullptr};
  VorHashSCMap* _results = nullptr;  // of this filter in _cache; null: not remembered
  long long _stepLimit = 0;          // 0 or less: none
  bool _isStepLimitReached = false;  // by the last match
};

#endif  // VOR_REGEX_TAUNICODEREGULAREXPRESSION_H
