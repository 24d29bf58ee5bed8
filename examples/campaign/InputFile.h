#ifndef VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H
#define VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H

#include <fstream>
#include <string>

namespace campaign {

/// Opens a file to be read.  Returns "" or one line that says why it cannot be; a folder, which a
/// stream would take for an empty file, cannot.
std::string OpenInput(const std::string& path, std::ifstream* file);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_INPUTFILE_H
