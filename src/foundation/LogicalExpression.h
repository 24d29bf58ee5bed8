#ifndef VOR_FOUNDATION_LOGICALEXPRESSION_H
#define VOR_FOUNDATION_LOGICALEXPRESSION_H

#include "../base/Export.h"
#include "../base/VorString.h"

/// 1 if \a text satisfies \a expression, else 0.  An invalid expression results in 0.
///
/// An expression consists of patterns (see TestMatch), parentheses, and the operators "&&" (all
/// must match), "||" (one must match) and "!" (negates the pattern or group that follows).  Blanks
/// belong to the patterns.  Unbalanced parentheses, "&&" and "||" in the same group, and the empty
/// negated group "!()" are invalid.
///
/// Stored expressions rely on these quirks:
///   - An opening parenthesis at the start and a closing one at the end of an expression or operand
///     are removed even if they do not belong together: "(a)||(b)" is the pattern "a)||(b".
///   - After "!!" only the opening parenthesis of a group is removed: "!!(a)" negates the pattern
///     "a)" twice.
///   - Missing operands are skipped, and every text satisfies "&&" alone.
///   - In an expression with operators, two bytes 0x7F in a row separate operands, as an operator
///     does.
///
/// The time is proportional to the length of the expression, even if it is deeply nested.  Only
/// long or complicated expressions allocate memory; running out of memory ends the process.
/// Threads: may be called from any thread.
VOR_API int TestMatchWithLogExp(const VorString& text, const VorString& expression) noexcept;

#endif  // VOR_FOUNDATION_LOGICALEXPRESSION_H
