#include "process/SearchedContainer.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <set>

#include "process/StoppedTree.h"

namespace vor {
namespace {

// Rounds of a kill: more than one is needed only if members start processes faster than they are
// stopped.
constexpr int kMostRounds = 100;
constexpr int kMsForEnds = 200;

}  // namespace

void SearchedContainer::NoteStart(pid_t root) {
  _root = {root, 0};
  if (root > 0) _root.start = ReadStartTime(root).value_or(0);
}

int SearchedContainer::SignalAll(int signal) {
  ProcessTable signalled = SignalOnce(signal, {});
  std::size_t before = 0;
  for (int round = 1; signal == SIGKILL && round < kMostRounds; ++round) {
    if (signalled.size() == before) break;
    before = signalled.size();
    const ProcessTable further = SignalOnce(signal, signalled);
    signalled.insert(signalled.end(), further.begin(), further.end());
  }
  if (signal == SIGKILL) AwaitEnds(signalled);
  return static_cast<int>(signalled.size());
}

// Returns those that got the signal; those of \a except do not get it.
ProcessTable SearchedContainer::SignalOnce(int signal, const ProcessTable& except) {
  std::set<ProcessId> excluded;
  for (const ProcessRow& process : except) excluded.insert(IdOf(process));
  const StoppedTree members([&](const ProcessTable& table) {
    ProcessTable found = Find(table);
    std::erase_if(found, [&](const ProcessRow& process) {
      return HasEnded(process) || excluded.count(IdOf(process)) != 0;
    });
    return found;
  });
  ProcessTable signalled;
  const std::vector<int> errors = members.SignalAll(signal);
  auto error = errors.rbegin();
  for (const ProcessRow& process : members.Processes()) {
    if (*error++ != 0 || HasEnded(process)) continue;
    NoteSignalled(process);
    signalled.push_back(process);
  }
  return signalled;
}

bool SearchedContainer::HasLiving() {
  if (_living.pid != 0 && IsLiving(_living)) return true;
  const ProcessTable living = FindLiving();
  _living = living.empty() ? ProcessRow{0, 0} : living.front();
  return !living.empty();
}

ProcessTable SearchedContainer::FindLiving() {
  ProcessTable table;
  if (!ReadProcessTable(table)) return {};
  ProcessTable found = Find(table);
  std::erase_if(found, HasEnded);
  return found;
}

void AwaitEnds(const ProcessTable& processes) {
  int waited = 0;
  for (const ProcessRow& process : processes) {
    for (; waited < kMsForEnds && IsLiving(process); ++waited) poll(nullptr, 0, 1);
  }
}

}  // namespace vor
