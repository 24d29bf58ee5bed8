#ifndef VOR_FOUNDATION_TEXTUTILITIES_H
#define VOR_FOUNDATION_TEXTUTILITIES_H

#include "base/Export.h"
#include "base/VorString.h"

class TAFileName;
class TAIndex;
class VorListValVorString;

// Line-oriented text handling: words of a line, comment lines, sorted lists of strings, a bounded
// search and escaping for XML.
//
// Nothing here keeps state, touches a file or reports an error; running out of memory ends the
// process.  Positions in strings are 0-based, positions in lists 1-based.
//
// Threads: every function may be called from any thread, on arguments that no other thread changes
// meanwhile.

/// Splits \a text at each occurrence of the whole \a separator (one blank by default; tabs never
/// separate) and stores the non-empty fields in \a out, which is emptied first.  Returns the
/// number of entries of \a out.  An index holds each different field once, sorted, with a null
/// value.  An empty separator separates nothing.
VOR_API int Split(const VorString& text, VorListValVorString& out) noexcept;
VOR_API int Split(const VorString& text, VorListValVorString& out,
                  const VorString& separator) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out, const VorString& separator) noexcept;

/// Splits into at most \a count fields; the last one is the rest of the text with the separators
/// in it.  Returns the number of entries of \a out.
///
/// Callers rely on two quirks: a separator that yields no field still counts, so "a,,b,c" in three
/// gives "a" and "b,c"; and behind a separator the next field begins one byte after the
/// separator's first byte, so the tail of a longer separator belongs to the field.
VOR_API int Split(const VorString& text, VorListValVorString& out, const VorString& separator,
                  int count) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out, const VorString& separator,
                  int count) noexcept;

/// Splits at blanks into at most \a count fields and then appends empty texts until \a out holds
/// \a count of them.  Returns \a count.  An index takes one empty text at most, since it holds no
/// entry twice.
VOR_API int Split(const VorString& text, VorListValVorString& out, int count) noexcept;
VOR_API int Split(const VorString& text, TAIndex& out, int count) noexcept;

/// Joins \a words with \a separator (one blank by default) into \a line.  An empty list leaves
/// \a line as it is.  Returns 0.
VOR_API int ToLine(const VorListValVorString& words, VorString& line,
                   const VorString& separator) noexcept;
VOR_API int ToLine(const VorListValVorString& words, VorString& line) noexcept;

/// 1 if the first character that is not a blank (a tab is no blank here) is '#' or the end of the
/// line, else 0.  \a line must not be null.
VOR_API int IsComment(const char* line);
VOR_API int IsComment(const VorString& line);

/// The position of an element of \a sorted that \a key begins with, or equals; 0 for none.
/// \a sorted is in ascending strcmp order.  Where several elements match, the bisection says which
/// one is met.
VOR_API int SearchInStringList(const VorString& key, const VorListValVorString& sorted);
/// The same among the positions \a low to \a high.
VOR_API int rSearchInStringList(const VorString& key, const VorListValVorString& sorted, int low,
                                int high);

/// Inserts \a value into the ascending list \a sorted, unless it is in it already.
VOR_API void InsertInList(const VorString& value, VorListValVorString& sorted) noexcept;
/// The same among the positions \a low to \a high of a list that is not empty.
VOR_API void rInsertInList(const VorString& value, VorListValVorString& sorted, int low,
                           int high) noexcept;

/// Searches \a pattern in the first line of \a text, at most \a limit bytes of it.  Returns the
/// start of the match in \a text, or null.
///
/// Callers rely on two quirks: an empty pattern matches only an empty text; and after a failed
/// partial match the search goes on behind it, so a match that overlaps it is missed ("aab" is
/// not found in "aaab").
VOR_API const char* Q_strstr(const char* text, const char* pattern, int limit);

/// A copy of \a text in which the characters & < > " ' are replaced by XML entities.  A literal
/// "toreplace" in the text becomes "&amp;" too; callers' stored files hold it so.
VOR_API VorString substituteEntities(const VorString& text) noexcept;

/// Orders two texts as strcmp: negative, zero or positive.  For QuickSort of the lists.
VOR_API int CompareTAStrings(VorString* left, VorString* right);
VOR_API int CompareTAStrings(TAFileName* left, TAFileName* right);

#endif  // VOR_FOUNDATION_TEXTUTILITIES_H
