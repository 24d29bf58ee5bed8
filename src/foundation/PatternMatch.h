#ifndef VOR_FOUNDATION_PATTERNMATCH_H
#define VOR_FOUNDATION_PATTERNMATCH_H

#include <string_view>

namespace vor {

/// TestMatch for texts that are not VorStrings.  Allocates nothing.
bool MatchesPattern(std::string_view text, std::string_view pattern);

}  // namespace vor

#endif  // VOR_FOUNDATION_PATTERNMATCH_H
