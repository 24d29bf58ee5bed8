#ifndef VOR_SOURCEFILES_GATE_H
#define VOR_SOURCEFILES_GATE_H

#include <atomic>

namespace vor {

/// A binary semaphore that is closed or open.  Any thread may open or close it, and repeated calls
/// have no further effect.  Waiting threads sleep.
///
/// It has no lock: in a child made by fork it still works and keeps its state.
///
/// Threads: every operation may be called from any thread.  A thread that has passed may destroy
///          the gate, even before Open has returned: Open wakes the others by the address alone.
class Gate {
 public:
  constexpr explicit Gate(bool isClosed = false) : _isClosed(isClosed ? 1 : 0) {}
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  void Close() { _isClosed = 1; }
  void Open() {
    _isClosed = 0;
    _isClosed.notify_all();
  }
  /// Waits until it is open and leaves it open.
  void Pass() const { _isClosed.wait(1); }
  /// Waits until it is open and closes it.
  void PassAndClose() {
    while (_isClosed.exchange(1) != 0) _isClosed.wait(1);
  }

 private:
  std::atomic<int> _isClosed;  // an int, which the system can wait for without a table of its own
};

}  // namespace vor

#endif  // VOR_SOURCEFILES_GATE_H
