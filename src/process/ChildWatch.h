#ifndef VOR_PROCESS_CHILDWATCH_H
#define VOR_PROCESS_CHILDWATCH_H

#include <poll.h>
#include <signal.h>
#include <sys/types.h>

#include <cstddef>
#include <vector>

#include "base/PosixFile.h"

namespace vor {

class WakeEvent;

/// Opens a process descriptor, which is readable once the process has ended; not open if the
/// process was reaped or there are no such descriptors.  Never below 3, close-on-exec.
FileDescriptor OpenProcess(pid_t pid);

/// Waits for the end of any of some children of this process, without reaping it.
///
/// Holds a process descriptor for each child it watches, from the first wait on, as long as all
/// objects of this class together hold at most a quarter of the soft limit of descriptors
/// (RLIMIT_NOFILE).  They are checked once a second.  Further children, and all children if the
/// system has no process descriptors, are checked at intervals.
class ChildWatch {
 public:
  /// Why a wait has ended.
  enum Outcome {
    kEnded,  ///< a child has ended
    kWoken,  ///< by the event, which it has taken, or by a signal
    kNothing
  };

  ChildWatch() = default;
  ChildWatch(const ChildWatch&) = delete;
  ChildWatch& operator=(const ChildWatch&) = delete;
  ~ChildWatch();

  /// Inserts a child at the 0-based \a index.  One that does not exist, or has an identifier of 0
  /// or less, counts as ended.
  void Insert(std::size_t index, pid_t pid);

  /// Removes the child at the 0-based \a index.
  void Remove(std::size_t index);

  /// From now on the end of the child at the 0-based \a index, which has ended, ends no wait.
  void Ignore(std::size_t index);

  /// Waits at most \a limitMs milliseconds, negative for no limit, and returns whether a child has
  /// ended.  It may return false early, for example when a signal arrives.
  bool WaitForEnd(int limitMs);

  /// The same, until \a wake is set or a signal arrives that \a mask does not block; the caller
  /// blocks all signals meanwhile.  It may return kNothing early.
  Outcome Wait(int limitMs, WakeEvent& wake, const sigset_t& mask);

 private:
  struct Child {
    pid_t pid;
    FileDescriptor process = {};  // not open: checked at intervals
    bool isIgnored = false;
  };

  Outcome Wait(int limitMs, WakeEvent* wake, const sigset_t* mask);
  bool Prepare();
  bool HasWatchedEnded();
  bool HasPolledEnded() const;
  void RecoverFromPoll();

  static bool Open(Child& child);
  static void Close(Child& child);

  std::vector<Child> _children;
  std::vector<pollfd> _polled;  // for one wait: the event, then the children with a descriptor
  std::vector<pid_t> _watched;  // for one wait: all children
  bool _allPolled = false;      // for one wait: all of them have a descriptor
  std::size_t _next = 0;        // of _watched, the next one to check by itself
};

}  // namespace vor

#endif  // VOR_PROCESS_CHILDWATCH_H
