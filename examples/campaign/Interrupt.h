#ifndef VOR_EXAMPLES_CAMPAIGN_INTERRUPT_H
#define VOR_EXAMPLES_CAMPAIGN_INTERRUPT_H

namespace campaign {

/// Makes the first SIGINT, SIGTERM or SIGHUP a request to stop; the second one, of any of them,
/// ends the process as usual.  A signal that is ignored stays ignored, as nohup and background jobs
/// of scripts expect.
void CatchInterrupts();

/// True once one of these signals has come.
bool IsInterrupted();

/// While it exists, only the third of these signals ends the process: the second must not prevent
/// the killing of running tests.
class InterruptDelay {
 public:
  InterruptDelay();
  InterruptDelay(const InterruptDelay&) = delete;
  InterruptDelay& operator=(const InterruptDelay&) = delete;
  ~InterruptDelay();
};

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_INTERRUPT_H
