#ifndef VOR_PROCESS_UNDISTURBEDSCOPE_H
#define VOR_PROCESS_UNDISTURBEDSCOPE_H

#include <pthread.h>
#include <signal.h>

namespace vor {

/// Keeps signals and cancellation away from the calling thread.  Signals that arrive meanwhile take
/// effect at the end.
class UndisturbedScope {
 public:
  UndisturbedScope() {
    sigset_t all;
    sigfillset(&all);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &_cancelState);
    pthread_sigmask(SIG_SETMASK, &all, &_mask);
  }
  UndisturbedScope(const UndisturbedScope&) = delete;
  UndisturbedScope& operator=(const UndisturbedScope&) = delete;
  ~UndisturbedScope() {
    pthread_sigmask(SIG_SETMASK, &_mask, nullptr);
    pthread_setcancelstate(_cancelState, nullptr);
  }

  /// The signals that were blocked before.
  const sigset_t& Mask() const { return _mask; }

 private:
  sigset_t _mask;
  int _cancelState = PTHREAD_CANCEL_ENABLE;
};

}  // namespace vor

#endif  // VOR_PROCESS_UNDISTURBEDSCOPE_H
