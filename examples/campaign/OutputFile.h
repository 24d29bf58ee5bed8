#ifndef VOR_EXAMPLES_CAMPAIGN_OUTPUTFILE_H
#define VOR_EXAMPLES_CAMPAIGN_OUTPUTFILE_H

#include <string>

namespace campaign {

// Files that are read after a campaign.  They appear under their names only when they are complete.
// Until then, a file of an earlier campaign stays as it was.  A device or a pipe is written
// directly.

/// Checks that WriteWhole can make the file \a path, so that a failure shows before any test runs.
/// Leaves nothing behind.  Returns "" or one line that says why it cannot.
std::string CheckWritable(const std::string& path);

/// Writes \a text under a temporary name in the directory of \a path and renames it.  Returns "" or
/// one line that says why it failed; \a path is then unchanged.
std::string WriteWhole(const std::string& path, const std::string& text);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_OUTPUTFILE_H
