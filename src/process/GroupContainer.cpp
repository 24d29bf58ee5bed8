#include "process/GroupContainer.h"

#include <signal.h>

#include <algorithm>

#include "process/ProcessSignal.h"

namespace vor {

Container::Entry GroupContainer::GetEntry() const {
  Entry entry;
  entry.ownGroup = true;
  return entry;
}

int GroupContainer::SignalAll(int signal) {
  if (!IsChild(Root().pid)) return SearchedContainer::SignalAll(signal);
  const ProcessTable members = FindLiving();
  for (const ProcessRow& process : members) _left.insert(IdOf(process));
  SignalGroup(Root().pid, signal);
  if (signal == SIGTERM) SignalGroup(Root().pid, SIGCONT);
  const auto hasLeft = [&](const ProcessRow& process) { return process.group != Root().pid; };
  if (std::any_of(members.begin(), members.end(), hasLeft)) SignalChild(Root().pid, signal);
  if (signal == SIGKILL) AwaitEnds(members);
  return static_cast<int>(members.size());
}

void GroupContainer::PrepareReap() {
  for (const ProcessRow& process : FindLiving()) _left.insert(IdOf(process));
}

ProcessTable GroupContainer::Find(const ProcessTable& table) {
  ProcessTable members;
  bool isOurs = IsChild(Root().pid);
  for (const ProcessRow& process : table) {
    const bool isMember = process.group == Root().pid && process.pid > 0;
    if (isMember && _left.count(IdOf(process)) != 0) isOurs = true;
    if (isMember || IdOf(process) == IdOf(Root())) members.push_back(process);
  }
  if (!isOurs) members.clear();
  return members;
}

}  // namespace vor
