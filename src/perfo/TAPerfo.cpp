#include "perfo/TAPerfo.h"

#include <algorithm>
#include <mutex>
#include <ostream>

#include "base/ForkSafeLock.h"
#include "base/NeverDestroyed.h"
#include "base/PointerRemoval.h"
#include "base/ScopedLock.h"
#include "base/VorListValVorString.h"
#include "perfo/PerfoFormat.h"

namespace {

// Guards TAPerfo::globalList.  No thread holds it while a report is made or written: a report is
// the tool's code and may take locks of its own, and the stream may be a pipe that is full.
constinit vor::ForkSafeMutex listMutex(vor::ForkStage::kRegistry);
const vor::ForkRegistration listMutexRegistration(listMutex);

// Static counters may come and go in any order.
constinit vor::NeverDestroyed<VorListPtrTAPerfo> allCounters;

template <typename Use>
void ForEachFromLast(Use use) {
  std::unique_lock guard(listMutex);
  VorListPtrTAPerfo& counters = TAPerfo::globalList;
  for (int i = counters.Size(); i > 0; --i) {
    TAPerfo* const counter = counters[i];
    guard.unlock();
    use(*counter);
    guard.lock();
    // If others were destroyed meanwhile, this one has moved towards the front.
    i = std::min(i, counters.Size());
    while (i > 0 && counters[i] != counter) --i;
  }
}

}  // namespace

constinit VorListPtrTAPerfo& TAPerfo::globalList = allCounters.object;

TAPerfo::TAPerfo() : TAPerfo("no-name") {}

TAPerfo::TAPerfo(const VorString& name) : _name(name) {
  TAPerfo::Reset();
  const std::lock_guard guard(listMutex);
  globalList.Append(this);
}

TAPerfo::~TAPerfo() {
  const std::lock_guard guard(listMutex);
  vor::RemoveFromList(globalList, this);
}

void TAPerfo::SetName(const VorString& name) {
  _name = name;
}

VorString TAPerfo::GetName() const {
  return _name;
}

void TAPerfo::Reset() {
  ClearCount();
  _start = time(nullptr);
}

void TAPerfo::Count(int n) {
  Add(n);
}

VorString TAPerfo::TotalInTime(time_t now) const noexcept {
  return countToStr(Total()) + " in " + lengthToStr(now - _start);
}

void TAPerfo::Report(VorString& line) {
  const vor::ScopedLock holder(_lock);
  line = _name + " " + TotalInTime(time(nullptr));
}

void TAPerfo::Report(std::ostream& out) {
  VorString line;
  Report(line);
  // Without the lock, since the stream may block.  One write keeps lines of several threads whole.
  out << line + "\n";
}

void TAPerfo::GlobalReport(VorListValVorString& lines) noexcept {
  ForEachFromLast([&lines](TAPerfo& counter) {
    VorString line;
    counter.Report(line);
    lines.Append(line);
  });
}

void TAPerfo::GlobalReport(std::ostream& out) {
  ForEachFromLast([&out](TAPerfo& counter) { counter.Report(out); });
}
