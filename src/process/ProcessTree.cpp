#include "process/ProcessTree.h"

#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <numeric>
#include <queue>
#include <string_view>
#include <unordered_set>

#include "base/VorListValVorString.h"
#include "foundation/Tracing.h"

// The order in which descendants are found is the order in which they are killed, and tools rely on
// it.  It is defined by a slow search: scan the table from its end for a row whose parent has been
// found, take that row, start the scan again.
//
// The same order comes from a priority queue.  A row becomes a candidate when its parent is found
// and stays one until it is taken, so each new scan takes the candidate nearest to the end of the
// table: the largest position in the queue.  The rows of one parent are found by bisection in an
// index that is sorted by parent.  So a search costs n log n for n rows instead of n squared.

namespace vor {
namespace {

constexpr char kRedirection[] = " > $KVR_UXT_NULL 2>&1";

// The rows of each parent, found by bisection.
class ChildIndex {
 public:
  explicit ChildIndex(const ProcessTable& table) : _table(table), _rows(table.size()) {
    std::iota(_rows.begin(), _rows.end(), std::size_t{0});
    std::stable_sort(_rows.begin(), _rows.end(), [&](std::size_t left, std::size_t right) {
      return _table[left].parent < _table[right].parent;
    });
  }

  template <typename Action>
  void ForEachChild(int parent, Action action) const {
    auto row = std::lower_bound(
        _rows.begin(), _rows.end(), parent,
        [&](std::size_t candidate, int value) { return _table[candidate].parent < value; });
    for (; row != _rows.end() && _table[*row].parent == parent; ++row) action(*row);
  }

 private:
  const ProcessTable& _table;
  std::vector<std::size_t> _rows;  // by parent
};

// A number is in the list only as toString writes it: "007" is no identifier.
std::unordered_set<int> NumbersIn(const VorListValVorString& pids) {
  std::unordered_set<int> numbers;
  for (int position = 1; position <= pids.Size(); ++position) {
    const std::string_view text = pids[position].View();
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    if (toString(number).View() == text) numbers.insert(number);
  }
  return numbers;
}

}  // namespace

ProcessTable FindTree(int root, const ProcessTable& table) {
  const ChildIndex index(table);
  std::vector<bool> queued(table.size());  // a table read while it changes may hold a cycle
  std::priority_queue<std::size_t> candidates;
  const auto queueChildren = [&](int parent) {
    index.ForEachChild(parent, [&](std::size_t row) {
      if (!queued[row]) candidates.push(row);
      queued[row] = true;
    });
  };

  const auto rootRow = std::find_if(table.begin(), table.end(),
                                    [&](const ProcessRow& row) { return row.pid == root; });
  ProcessTable tree{rootRow == table.end() ? ProcessRow{root, 0} : *rootRow};
  queueChildren(root);
  while (!candidates.empty()) {
    tree.push_back(table[candidates.top()]);
    candidates.pop();
    queueChildren(tree.back().pid);
  }
  return tree;
}

void AppendChildrenInOnePass(const ProcessTable& table, VorListValVorString& pids) {
  std::unordered_set<int> known = NumbersIn(pids);
  for (const ProcessRow& row : table) {
    if (known.count(row.parent) != 0 && known.insert(row.pid).second) {
      pids.Append(toString(row.pid));
    }
  }
}

std::vector<std::string> KillCommands(const ProcessTable& tree, std::size_t longest) {
  const char* const prefix = getenv("whence_ro");
  const std::string begin = prefix == nullptr ? "kill -9" : std::string(prefix) + " kill -9";
  const std::string end = getenv("KVR_UXT_NULL") == nullptr ? "" : kRedirection;

  std::vector<std::string> commands{begin};
  for (auto process = tree.rbegin(); process != tree.rend(); ++process) {
    const VorString text = toString(process->pid);
    const std::size_t length = commands.back().size() + 1 + text.View().size() + end.size();
    if (length > longest && commands.back().size() > begin.size()) {
      commands.back() += end;
      commands.push_back(begin);
    }
    commands.back().append(1, ' ').append(text.View());
  }
  commands.back() += end;
  return commands;
}

}  // namespace vor
