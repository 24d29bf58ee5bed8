#ifndef VOR_EXAMPLES_CAMPAIGN_OUTPUT_H
#define VOR_EXAMPLES_CAMPAIGN_OUTPUT_H

#include <string>

namespace campaign {

/// Writes \a text to standard output at once.  OutputProblem reports a failure.
void Print(const std::string& text);

/// \a text with ? in place of control characters, which a terminal would interpret.
std::string Printable(std::string text);

/// "", or one line that says why something that was printed did not reach standard output.
std::string OutputProblem();

/// True if standard output is a pipe or a socket whose reader has closed it.
bool HasReaderGone();

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_OUTPUT_H
