#ifndef VOR_PERFO_TAPERFO_H
#define VOR_PERFO_TAPERFO_H

#include <time.h>

#include <atomic>
#include <iosfwd>

#include "../base/Export.h"
#include "../base/VorListPtr.h"
#include "../base/VorString.h"
#include "../thread/TAThreadLock.h"

class VorListPtrTAPerfo;
class VorListValVorString;

/// Counts a quantity, such as bytes or requests, from a starting time on, and reports it in one
/// line: name, count and time, as in "requests 1.5k in 2m".
///
/// A list of the process contains every counter, so that a tool can report all of them at once.
///
/// Ownership: the list does not own the counters.  A counter that is destroyed leaves the list.
/// Errors:    none; a count outside the range of int wraps round.
/// Threads:   Count, Reset and Report may be called from any thread; a Report during a Reset may
///            combine the old count with the new time.  The names have no lock: call SetName only
///            while no other thread uses the counter.  Any thread may create and destroy counters,
///            but must not destroy one while another thread is in GlobalReport.  The report of one
///            counter may create and destroy others.  A counter may be a static object.  A child
///            made by fork may use all counters, except one that another thread was reporting or,
///            if it is of a derived class, counting with at the moment of the fork: the lock of
///            that counter stays locked.
class VOR_API TAPerfo {
 public:
  /// A counter with the name "no-name".
  TAPerfo();
  explicit TAPerfo(const VorString& name);
  TAPerfo(const TAPerfo&) = delete;
  TAPerfo& operator=(const TAPerfo&) = delete;

  /// Neither takes a lock, so an override of the operations below may call them while it holds the
  /// counter's lock.
  void SetName(const VorString& name);
  VorString GetName() const;

  /// Sets the count to zero and the starting time to now.  Takes no lock.
  virtual void Reset();
  /// Adds \a n, which may be negative.  Takes no lock.
  virtual void Count(int n);
  /// Replaces \a line by the report, which has no newline.
  virtual void Report(VorString& line);
  /// Writes the same line and a newline to \a out, in one write and without the counter's lock, so
  /// other threads go on counting while \a out blocks.  Several threads may write to one stream
  /// only if the stream allows it, as std::cout and std::cerr do; each line then stays whole.
  virtual void Report(std::ostream& out);

  /// Appends the reports of all counters of the process, the newest counter first.
  static void GlobalReport(VorListValVorString& lines) noexcept;
  /// Writes the same reports to \a out.
  static void GlobalReport(std::ostream& out);

  /// Leaves the list of the process.
  virtual ~TAPerfo();

  /// Every counter of the process, in the order of construction.  Only the counters change it,
  /// under a lock of the library; read it only while no other thread creates or destroys counters.
  static VorListPtrTAPerfo& globalList;

 protected:
  /// The count so far.
  int Total() const { return static_cast<int>(_count.load(std::memory_order_relaxed)); }
  /// Adds to the count.
  void Add(int n) { _count.fetch_add(static_cast<unsigned>(n), std::memory_order_relaxed); }
  void ClearCount() { _count.store(0, std::memory_order_relaxed); }
  /// The end of every report: the count and the time since the start.
  VorString TotalInTime(time_t now) const noexcept;

  VorString _name;
  std::atomic<time_t> _start{0};  // seconds since the epoch
  mutable TAThreadLock _lock;     // held while Report formats; derived classes also count with it

 private:
  std::atomic<unsigned> _count{0};
};

/// A list of pointers, which it does not own.
class VOR_API VorListPtrTAPerfo : public VorListPtr<TAPerfo> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_PERFO_TAPERFO_H
