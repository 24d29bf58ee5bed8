#include "perfo/TAPerfo.h"

#include <algorithm>
#include <mutex>
#include <ostream>

#include "base/ListSearch.h"
#include "base/NamedLists.h"
#include "base/VorListValVorString.h"
#include "perfo/PerfoFormat.h"
#include "thread/LockHolder.h"

namespace {

struct Registry {
  std::recursive_mutex mutex;  // a report may make counters itself
  VorListPtrTAPerfo counters;
};

// Never destroyed, so that static counters may come and go in any order.
Registry& TheRegistry() {
  static Registry* const registry = new Registry;
  return *registry;
}

template <typename Use>
void ForEachFromLast(Use use) {
  Registry& registry = TheRegistry();
  const std::lock_guard guard(registry.mutex);
  VorListPtrTAPerfo& counters = registry.counters;
  for (int i = counters.Size(); i > 0; --i) {
    TAPerfo* const counter = counters[i];
    use(*counter);
    // A report may have destroyed others, which moves this one towards the front.
    i = std::min(i, counters.Size());
    while (i > 0 && counters[i] != counter) --i;
  }
}

}  // namespace

TAPerfo::TAPerfo() : TAPerfo("no-name") {}

TAPerfo::TAPerfo(const VorString& name) : _name(name) {
  TAPerfo::Reset();
  Registry& registry = TheRegistry();
  const std::lock_guard guard(registry.mutex);
  registry.counters.Append(this);
}

TAPerfo::~TAPerfo() {
  Registry& registry = TheRegistry();
  const std::lock_guard guard(registry.mutex);
  vor::RemoveFromList(registry.counters, this);
}

void TAPerfo::SetName(const VorString& name) {
  const vor::LockHolder holder(_lock);
  _name = name;
}

VorString TAPerfo::GetName() const {
  const vor::LockHolder holder(_lock);
  return _name;
}

void TAPerfo::Reset() {
  const vor::LockHolder holder(_lock);
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
  const vor::LockHolder holder(_lock);
  line = _name + " " + TotalInTime(time(nullptr));
}

void TAPerfo::Report(std::ostream& out) {
  VorString line;
  Report(line);
  const vor::LockHolder holder(_lock);  // lines from several threads stay whole
  out << line << '\n';
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
