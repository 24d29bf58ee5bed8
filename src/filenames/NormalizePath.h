#ifndef VOR_FILENAMES_NORMALIZEPATH_H
#define VOR_FILENAMES_NORMALIZEPATH_H

#include <cstddef>

namespace vor {

/// Brings the path text[0..length) into the form that TAFileName keeps, in place and without
/// looking at the file system, and returns its new length.  text[length] must be the terminator;
/// the new text is terminated too.  The time is proportional to the length, however much is folded.
///
/// The text may fold to nothing ("x/..").  A second call may fold further, because each call halves
/// a run of slashes.
std::size_t NormalizePath(char* text, std::size_t length);

/// Whether NormalizePath would leave the text as it is.
bool IsNormalPath(const char* text, std::size_t length);

}  // namespace vor

#endif  // VOR_FILENAMES_NORMALIZEPATH_H
