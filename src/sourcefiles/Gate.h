#ifndef VOR_SOURCEFILES_GATE_H
#define VOR_SOURCEFILES_GATE_H

#include <condition_variable>
#include <mutex>

namespace vor {

/// A binary semaphore: closed or open, whoever closed or opened it and however often.  Those who
/// wait for it sleep.  Every operation may be called from any thread.
class Gate {
 public:
  explicit Gate(bool isClosed = false) : _isClosed(isClosed) {}
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  void Close() {
    const std::lock_guard guard(_mutex);
    _isClosed = true;
  }
  void Open() {
    const std::lock_guard guard(_mutex);
    _isClosed = false;
    _opened.notify_all();  // with the lock: whoever passes may destroy the gate
  }
  /// Waits until it is open and leaves it open.
  void Pass() {
    std::unique_lock guard(_mutex);
    _opened.wait(guard, [this] { return !_isClosed; });
  }
  /// Waits until it is open and closes it.
  void PassAndClose() {
    std::unique_lock guard(_mutex);
    _opened.wait(guard, [this] { return !_isClosed; });
    _isClosed = true;
  }

 private:
  std::mutex _mutex;
  std::condition_variable _opened;
  bool _isClosed;
};

}  // namespace vor

#endif  // VOR_SOURCEFILES_GATE_H
