#ifndef VOR_PROCESS_WAKEEVENT_H
#define VOR_PROCESS_WAKEEVENT_H

#include <sys/types.h>

#include <atomic>

namespace vor {

/// An event that ends the wait of one thread.  It stays set until it is taken.
///
/// The object may be copied by a fork: parent and child then have an event each.
///
/// Threads: Set may be called by any thread and in a signal handler, the others by the thread that
///          waits.
class WakeEvent {
 public:
  WakeEvent() = default;
  WakeEvent(const WakeEvent&) = delete;
  WakeEvent& operator=(const WakeEvent&) = delete;
  ~WakeEvent();

  /// Keeps errno.
  void Set() noexcept;

  /// Returns whether the event was set, and resets it.
  bool Take();

  /// A descriptor that becomes readable when the event is set later than this call; -1 if none is
  /// free.  To be called, followed by Take, before each wait for it.
  int Open();

  /// Makes the descriptor unreadable again; to be followed by Take.
  void Drain();

 private:
  void Close();

  // The waiting thread first publishes the descriptor, then looks at the flag; Set first sets the
  // flag, then looks at the descriptor.  So in the one order of all these steps, the flag is seen
  // before the wait or the descriptor is seen and written: no event is lost.
  std::atomic<bool> _isSet = false;
  std::atomic<int> _fd = -1;
  std::atomic<pid_t> _owner = 0;  // the process that made the descriptor; a fork shares it
};

}  // namespace vor

#endif  // VOR_PROCESS_WAKEEVENT_H
