#ifndef VOR_EXAMPLES_CAMPAIGN_OUTPUT_H
#define VOR_EXAMPLES_CAMPAIGN_OUTPUT_H

#include <string>

namespace campaign {

// Standard output.  One thread uses it.  A reader that pauses must not stop the campaign, its time
// limits and its interrupts: what cannot be written without waiting stays in memory.

/// Writes \a text to standard output as far as that is possible without waiting.  The rest is
/// written later, in order.  OutputProblem reports a failure.
void Print(const std::string& text);

/// Writes more of what was printed, without waiting.  Returns true if some of it remains.
bool ContinueOutput();

/// Writes all that was printed and waits for the reader as long as it takes; after an interrupt
/// only while the reader goes on reading.
void FinishOutput();

/// \a text with ? in place of control characters, which a terminal would interpret.
std::string Printable(std::string text);

/// "", or one line that says why something that was printed did not reach standard output.
std::string OutputProblem();

/// True if standard output is a pipe or a socket whose reader has closed it.
bool HasReaderGone();

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_OUTPUT_H
