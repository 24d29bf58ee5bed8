#ifndef VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H
#define VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H

#include <fstream>
#include <string>

namespace campaign {

/// Opens a file to read it.  Returns "" or one line that says why it cannot be read.  A directory
/// is refused; a stream would read it as an empty file.
std::string OpenInput(const std::string& path, std::ifstream* file);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H
