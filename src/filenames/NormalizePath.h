#ifndef VOR_FILENAMES_NORMALIZEPATH_H
#define VOR_FILENAMES_NORMALIZEPATH_H

#include <cstddef>

namespace vor {

/// Brings the path text[0..length) into the form that TAFileName keeps, in place and without
/// looking at the file system, and returns its new length.  text[length] must be the terminator;
/// the new text is terminated too.  Takes time in proportion to the length, however much folds.
///
/// The text may fold to nothing ("x/..").  A second call may fold further: of a run of slashes
/// each call takes half.
std::size_t NormalizePath(char* text, std::size_t length);

}  // namespace vor

#endif  // VOR_FILENAMES_NORMALIZEPATH_H
