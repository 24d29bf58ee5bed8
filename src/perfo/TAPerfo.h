#ifndef VOR_PERFO_TAPERFO_H
#define VOR_PERFO_TAPERFO_H

#include <time.h>

#include <atomic>
#include <iosfwd>

#include "base/Export.h"
#include "base/VorString.h"
#include "thread/TAThreadLock.h"

class VorListValVorString;

/// Counts a quantity, such as bytes or requests, from a starting time on, and reports it as one
/// line: name, count and time, as in "requests 1.5k in 2m".
///
/// Every counter is in a list of the process, so that a tool can report all of them at once.
///
/// Ownership: the list does not own the counters; a counter that is destroyed leaves it.
/// Errors:    none; a count that an int cannot tell wraps round.
/// Threads:   Count and Report may be called from any thread.  Counters may be made and destroyed
///            in any thread, but none may be destroyed while another thread reports all of them.
///            The report of one may make and destroy others.  A counter may be a static object.
class VOR_API TAPerfo {
 public:
  /// A counter with the name "no-name".
  TAPerfo();
  explicit TAPerfo(const VorString& name);
  TAPerfo(const TAPerfo&) = delete;
  TAPerfo& operator=(const TAPerfo&) = delete;

  void SetName(const VorString& name);
  VorString GetName() const;

  /// Counts from zero and from now on.
  virtual void Reset();
  /// Adds \a n, which may be negative.  Takes no lock.
  virtual void Count(int n);
  /// Puts the report, without a line end, in the place of \a line.
  virtual void Report(VorString& line);
  /// Writes the same line, with a line end, under the lock of the counter: \a out must not count
  /// with it.
  virtual void Report(std::ostream& out);

  /// Appends the reports of all counters of the process, the one made last first.
  static void GlobalReport(VorListValVorString& lines) noexcept;
  /// Writes them to \a out.
  static void GlobalReport(std::ostream& out);

  /// Leaves the list of the process.
  virtual ~TAPerfo();

 protected:
  /// The count so far.
  int Total() const { return static_cast<int>(_count.load(std::memory_order_relaxed)); }
  /// Adds to the count.
  void Add(int n) { _count.fetch_add(static_cast<unsigned>(n), std::memory_order_relaxed); }
  void ClearCount() { _count.store(0, std::memory_order_relaxed); }
  /// What all reports end with: the count, and the time since the start.
  VorString TotalInTime(time_t now) const noexcept;

  VorString _name;
  time_t _start = 0;  // seconds since the epoch
  mutable TAThreadLock _lock;

 private:
  std::atomic<unsigned> _count{0};
};

#endif  // VOR_PERFO_TAPERFO_H
