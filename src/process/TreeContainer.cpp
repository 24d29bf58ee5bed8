#include "process/TreeContainer.h"

#include <unordered_set>

namespace vor {

ProcessTable TreeContainer::Find(const ProcessTable& table) {
  ProcessTable members;
  std::unordered_set<int> pids;
  const auto add = [&](const ProcessRow& process) {
    if (pids.insert(process.pid).second) members.push_back(process);
  };
  for (const ProcessRow& process : table) {
    const ProcessId id = IdOf(process);
    if (id == IdOf(Root()) || _signalled.count(id) != 0 || IsMarked(process)) add(process);
  }
  // A child usually has a higher number than its parent, so few passes are needed.
  for (std::size_t before = 0; before != members.size();) {
    before = members.size();
    for (const ProcessRow& process : table) {
      if (pids.count(process.parent) != 0) add(process);
    }
  }
  return members;
}

bool TreeContainer::IsMarked(const ProcessRow&) {
  return false;
}

}  // namespace vor
