#include "process/ControlGroupContainer.h"

#include <signal.h>

#include <algorithm>
#include <unordered_set>

namespace vor {
namespace {

constexpr int kMsForEnds = 100;

}  // namespace

Container::Entry ControlGroupContainer::GetEntry() const {
  Entry entry = MarkedProcesses::GetEntry();
  entry.controlGroup = _group->EntryFile();
  return entry;
}

void ControlGroupContainer::NoteStart(pid_t root) {
  MarkedProcesses::NoteStart(root);
  _group->CloseEntry();
  if (root == 0) _group.reset();
}

int ControlGroupContainer::SignalAll(int signal) {
  if (_group == nullptr) return 0;
  if (signal != SIGKILL || !HasEntered()) return MarkedProcesses::SignalAll(signal);
  if (!_group->IsPopulated()) return 0;
  // A reading may miss a process that starts another one and ends, so at least one was there.
  const std::size_t count = std::max<std::size_t>(_group->Members().size(), 1);
  if (_group->Kill()) _group->AwaitEmpty(kMsForEnds);
  if (_group->IsPopulated()) MarkedProcesses::SignalAll(signal);
  return static_cast<int>(count);
}

bool ControlGroupContainer::HasLiving() {
  if (_group == nullptr) return false;
  return HasEntered() ? _group->IsPopulated() : MarkedProcesses::HasLiving();
}

void ControlGroupContainer::PrepareReap() {
  if (_group == nullptr || _group->IsPopulated()) return;
  if (HasEntered() || !_group->Holds(Root().pid).has_value()) _group.reset();
}

ProcessTable ControlGroupContainer::Find(const ProcessTable& table) {
  if (_group == nullptr) return {};
  if (!HasEntered()) return MarkedProcesses::Find(table);
  // Read after the table: a number that is in both belongs to a member.
  const std::unordered_set<int> numbers = _group->Members();
  ProcessTable members;
  std::copy_if(table.begin(), table.end(), std::back_inserter(members),
               [&](const ProcessRow& process) { return numbers.count(process.pid) != 0; });
  return members;
}

bool ControlGroupContainer::HasEntered() {
  if (_group != nullptr && !_hasEntered) {
    _hasEntered = _group->IsPopulated() || _group->Holds(Root().pid).value_or(false);
  }
  return _hasEntered;
}

}  // namespace vor
