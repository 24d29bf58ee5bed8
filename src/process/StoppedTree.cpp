#include "process/StoppedTree.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>

#include "process/ProcessSignal.h"
#include "process/ProcessTree.h"

// A tree changes while it is read and killed: parents start processes meanwhile, and a shell that
// restarts what dies starts the next one if its child is killed first.  So every process found gets
// SIGSTOP, and the table is read again until it shows no new one.
//
// SIGSTOP takes effect some time after it was sent, and a fork that has begun still completes.  But
// a process all of whose threads are shown as stopped starts no more processes, and all that it has
// started are in the table.  So the search is complete once a whole reading of the table, begun
// after all members were seen stopped, shows the same members.
//
// A member may never be seen stopped: it waits for a disk, or for the exec of a child that was
// stopped first (vfork).  And a tree may grow faster than it is stopped.  So the number of readings
// is limited.

namespace vor {
namespace {

constexpr int kMostReadings = 100;
constexpr int kMostQuietReadings = 20;  // one after another, without anything new
constexpr int kMsBetweenReadings = 1;   // if there is nothing new to stop

}  // namespace

StoppedTree::StoppedTree(int root, bool isChild)
    : _search([root](const ProcessTable& table) { return FindTree(root, table); }),
      _child(isChild ? root : 0),
      _processes{{root, 0}} {
  Stop();
}

StoppedTree::StoppedTree(Search search) : _search(std::move(search)), _child(0) {
  Stop();
}

void StoppedTree::Stop() {
  if (!Find()) return;
  const int self = getpid();
  const auto isSelf = [&](const ProcessRow& process) { return process.pid == self; };
  if (std::none_of(_processes.begin(), _processes.end(), isSelf)) StopAll();
}

StoppedTree::~StoppedTree() {
  for (auto process = _stopped.rbegin(); process != _stopped.rend(); ++process) {
    Signal(*process, SIGCONT);
  }
}

std::vector<int> StoppedTree::SignalAll(int signal) const {
  std::vector<int> errors;
  for (auto process = _processes.rbegin(); process != _processes.rend(); ++process) {
    errors.push_back(Signal(*process, signal));
  }
  return errors;
}

int StoppedTree::Signal(const ProcessRow& process, int signal) const {
  if (_child != 0 && process.pid == _child) return SignalChild(_child, signal);
  return SignalProcess(process, signal);
}

void StoppedTree::StopAll() {
  std::set<ProcessId> motionless;  // in the reading before
  int quiet = 0;
  for (int reading = 1; reading < kMostReadings && quiet < kMostQuietReadings; ++reading) {
    const bool isNew = StopFound();
    quiet = isNew ? 0 : quiet + 1;
    const auto isRestless = [&](const ProcessRow& process) {
      return motionless.count(IdOf(process)) == 0;
    };
    if (std::none_of(_processes.begin(), _processes.end(), isRestless)) return;
    motionless.clear();
    for (const ProcessRow& process : _processes) {
      if (IsMotionless(process) || _refused.count(IdOf(process)) != 0) {
        motionless.insert(IdOf(process));
      }
    }
    if (!isNew && motionless.size() < _processes.size()) poll(nullptr, 0, kMsBetweenReadings);
    if (!Find()) return;
  }
}

// Reads the tree from the process table; leaves it as it is, and returns false, if that fails.
bool StoppedTree::Find() {
  ProcessTable table;
  if (!ReadProcessTable(table)) return false;
  if (_child != 0 && !IsChild(_child)) {  // the table may show another process of its number
    _processes.clear();
    return false;
  }
  _processes = _search(table);
  std::set<ProcessId> found;
  for (const ProcessRow& process : _processes) found.insert(IdOf(process));
  std::set<ProcessId> living;
  for (const ProcessRow& process : table) living.insert(IdOf(process));
  // A stopped process stays a member, even if its parent ended before it was stopped itself.
  for (const ProcessRow& orphan : _stopped) {
    if (found.count(IdOf(orphan)) != 0 || living.count(IdOf(orphan)) == 0) continue;
    for (const ProcessRow& process : FindTree(orphan.pid, table)) {
      if (found.insert(IdOf(process)).second) _processes.push_back(process);
    }
  }
  return true;
}

// Returns whether there was anything new to stop.
bool StoppedTree::StopFound() {
  bool isNew = false;
  for (const ProcessRow& process : _processes) {
    if (!_signalled.insert(IdOf(process)).second) continue;
    isNew = true;
    if (Signal(process, SIGSTOP) == 0) {
      _stopped.push_back(process);
    } else {
      _refused.insert(IdOf(process));
    }
  }
  return isNew;
}

}  // namespace vor
