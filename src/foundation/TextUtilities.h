#ifndef VOR_FOUNDATION_TEXTUTILITIES_H
#define VOR_FOUNDATION_TEXTUTILITIES_H

#include <concepts>

#include "../base/Export.h"
#include "../base/VorString.h"

class TAFileName;
class TAIndex;
class VorListValVorString;

// Line-oriented text handling: the words of a line, comment lines, sorted lists of strings, a
// bounded search, and escaping for XML.
//
// Positions in strings are 0-based, positions in lists 1-based.  Nothing here keeps state, uses
// files or reports an error; running out of memory ends the process.
//
// Threads: every function may be called from any thread if no other thread changes its arguments.

/// Splits \a text at each occurrence of the whole \a separator and stores the non-empty fields in
/// \a out, which is emptied first.  The default separator is one blank; a tab is not a blank.  An
/// empty separator separates nothing.  Returns the number of entries of \a out.
///
/// An index contains each distinct field once, sorted, with a null value.
VOR_API int Split(const VorString& text, VorListValVorString& out) noexcept;
VOR_API int Split(const VorString& text, VorListValVorString& out,
                  const VorString& separator) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out, const VorString& separator) noexcept;

/// Splits into at most \a count fields; the last one is the rest of the text, including its
/// separators.  Returns the number of entries of \a out.
///
/// Callers rely on two quirks.  An empty field is not stored but counts: "a,,b,c" with count 3
/// results in "a" and "b,c".  The next field begins one byte after the start of a separator, so it
/// includes the rest of a longer separator.
VOR_API int Split(const VorString& text, VorListValVorString& out, const VorString& separator,
                  int count) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out, const VorString& separator,
                  int count) noexcept;

/// Splits at blanks into at most \a count fields, then appends empty texts until \a out has that
/// many entries.  Returns \a count.  An index gets at most one empty text, because it contains no
/// entry twice.
VOR_API int Split(const VorString& text, VorListValVorString& out, int count) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out, int count) noexcept;
// A character would be converted to a count.
template <typename Out, std::same_as<char> Separator>
int Split(const VorString& text, Out& out, Separator) = delete;  // pass a text: "," instead of ','

/// Joins \a words with \a separator (one blank by default) and stores the result in \a line.  An
/// empty list leaves \a line unchanged.  Returns 0.
VOR_API int ToLine(const VorListValVorString& words, VorString& line,
                   const VorString& separator) noexcept;
VOR_API int ToLine(const VorListValVorString& words, VorString& line) noexcept;

/// 1 if \a line is empty or blank, or if its first byte that is not a blank is a '#'; else 0.  A
/// tab is not a blank.  The line must not be null.
VOR_API int IsComment(const char* line);
VOR_API int IsComment(const VorString& line);

/// The position of an element of \a sorted that is a prefix of \a key or equals it; 0 if none is
/// found.  \a sorted is in ascending strcmp order.
///
/// The bisection compares only some elements.  If several elements match, it finds one of them.  It
/// can miss a prefix if other elements lie between the prefix and \a key.
VOR_API int SearchInStringList(const VorString& key, const VorListValVorString& sorted);
/// The same among the positions \a low to \a high.
VOR_API int rSearchInStringList(const VorString& key, const VorListValVorString& sorted, int low,
                                int high);

/// Inserts \a value into the ascending list \a sorted, unless the list contains it.
VOR_API void InsertInList(const VorString& value, VorListValVorString& sorted) noexcept;
/// The same among the positions \a low to \a high of a list that is not empty.
VOR_API void rInsertInList(const VorString& value, VorListValVorString& sorted, int low,
                           int high) noexcept;

/// Searches \a pattern in the first \a limit bytes of the first line of \a text.  Returns the start
/// of the match in \a text, or null.
///
/// Callers rely on two quirks.  An empty pattern matches only an empty text.  After a failed
/// partial match, the search continues at the byte that differed, so it misses a match that
/// overlaps the partial one: "aab" is not found in "aaab".
VOR_API const char* Q_strstr(const char* text, const char* pattern, int limit);

/// A copy of \a text with XML entities for the characters & < > " '.  The word "toreplace" becomes
/// "&amp;" too; stored files of callers contain it in this form.  EscapeXml (XmlEscaping.h) does
/// not do this.
VOR_API VorString substituteEntities(const VorString& text) noexcept;

/// Compares two texts as strcmp does, for QuickSort of the lists.
VOR_API int CompareTAStrings(VorString* left, VorString* right);
VOR_API int CompareTAStrings(TAFileName* left, TAFileName* right);

#endif  // VOR_FOUNDATION_TEXTUTILITIES_H
