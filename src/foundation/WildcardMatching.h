#ifndef VOR_FOUNDATION_WILDCARDMATCHING_H
#define VOR_FOUNDATION_WILDCARDMATCHING_H

#include "../base/Export.h"
#include "../base/VorString.h"

// Matching of names against patterns in which a star stands for any run of characters.
//
// There is no other metacharacter and no escape.  The stars cut the pattern into pieces.  A text
// matches if it begins with the first piece (unless a star precedes it), ends with the last piece
// (unless a star follows it) and contains the pieces in order.  Callers rely on these quirks:
//   - A piece may begin where the one before began, so pieces may overlap: "ab*b" matches "ab".
//   - A pattern without a star matches each text that both begins and ends with it: "ab" matches
//     "abXab".
//   - The pattern "*" matches every text, but the pattern "**" matches only the text "**".
//
// Comparisons of a text or pattern end at a NUL byte, as in the C library; its length includes the
// bytes after it.
//
// Nothing here keeps state or fails.  Only TestMatchNoCase allocates memory, for texts far longer
// than names; running out of memory ends the process.
// Threads: both functions may be called from any thread.

/// 1 if \a text matches \a pattern, else 0.
VOR_API int TestMatch(const VorString& text, const VorString& pattern);

/// The same, but the letters a to z are equal to A to Z.
VOR_API int TestMatchNoCase(const VorString& text, const VorString& pattern) noexcept;

#endif  // VOR_FOUNDATION_WILDCARDMATCHING_H
