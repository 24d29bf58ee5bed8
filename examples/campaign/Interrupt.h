#ifndef VOR_EXAMPLES_CAMPAIGN_INTERRUPT_H
#define VOR_EXAMPLES_CAMPAIGN_INTERRUPT_H

namespace campaign {

/// Makes the first SIGINT, SIGTERM or SIGHUP a request to stop; a second one ends the process as
/// usual.
void CatchInterrupts();

/// True once one of these signals has come.
bool IsInterrupted();

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_INTERRUPT_H
