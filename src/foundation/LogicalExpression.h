#ifndef VOR_FOUNDATION_LOGICALEXPRESSION_H
#define VOR_FOUNDATION_LOGICALEXPRESSION_H

#include "base/Export.h"
#include "base/VorString.h"

/// 1 if \a text satisfies \a expression, else 0; also 0 for an expression that is not valid.
///
/// An expression is made of patterns of TestMatch, "&&" (all must match), "||" (one must match),
/// "!" (not, for the pattern or group behind it) and parentheses.  "&&" and "||" may not stand side
/// by side in one group.  Blanks belong to the patterns.  Not valid are unbalanced parentheses,
/// mixed operators and the empty negated group "!()".
///
/// Stored expressions rely on what this shorthand of a syntax makes of these:
///   - an opening parenthesis at the start and a closing one at the end of an expression or operand
///     are taken off even if they do not belong together, so "(a)||(b)" is the pattern "a)||(b";
///   - "!!(a)" negates the pattern "a)" twice: behind an exclamation mark that is not directly
///     before the group, only the opening parenthesis is taken off;
///   - missing operands are passed over, and "&&" alone is satisfied by every text;
///   - operators are overwritten by two bytes 0x7F and the operands split at those, so that such
///     bytes in the expression itself separate operands too where there is an operator.
///
/// The time grows with the length of the expression, however deeply it is nested.  Only long or
/// complicated expressions make it allocate memory; running out of it ends the process.  Threads:
/// may be called from any thread.
VOR_API int TestMatchWithLogExp(const VorString& text, const VorString& expression) noexcept;

#endif  // VOR_FOUNDATION_LOGICALEXPRESSION_H
