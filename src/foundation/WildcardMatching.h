#ifndef VOR_FOUNDATION_WILDCARDMATCHING_H
#define VOR_FOUNDATION_WILDCARDMATCHING_H

#include "base/Export.h"
#include "base/VorString.h"

// Matching of names against patterns in which a star stands for any run of characters.
//
// There is no other metacharacter and no escape.  The stars cut the pattern into pieces.  A text
// matches if it begins with the first piece (unless a star comes before it), ends with the last
// one (unless a star comes behind it) and holds the pieces in order.  Callers rely on these
// consequences:
//   - pieces are in order when each begins no earlier than the one before, so they may overlap:
//     "ab*b" matches "ab";
//   - a pattern without a star matches each text that both begins and ends with it: "ab" matches
//     "abXab";
//   - "*" matches every text, but "**" only the text "**".
//
// A NUL byte in a text or pattern ends it for the comparisons, as in the C library, but not for
// its length.
//
// Nothing here keeps state or fails, and only ignoring the case of texts far longer than names
// allocates memory; running out of it ends the process.
// Threads: both functions may be called from any thread.

/// 1 if \a text matches \a pattern, else 0.
VOR_API int TestMatch(const VorString& text, const VorString& pattern);

/// The same with the letters a to z counted as A to Z, in \a text and \a pattern.
VOR_API int TestMatchNoCase(const VorString& text, const VorString& pattern) noexcept;

#endif  // VOR_FOUNDATION_WILDCARDMATCHING_H
