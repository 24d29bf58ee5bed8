#include "process/Container.h"

#include <unistd.h>

#include "process/ControlGroup.h"
#include "process/ControlGroupContainer.h"
#include "process/GroupContainer.h"
#include "process/MarkedProcesses.h"
#include "process/TreeContainer.h"

namespace vor {

void Container::Entry::Apply() const {
  if (controlGroup >= 0) {
    [[maybe_unused]] const ssize_t written = write(controlGroup, "0", 1);
  }
  if (ownGroup) setpgid(0, 0);
  if (mark != 0) ApplyMark(mark);
}

std::unique_ptr<Container> Container::Make(TAContainment containment) {
  switch (containment) {
    case TAContainment::Tree:
      return nullptr;
    case TAContainment::Group:
      return std::make_unique<GroupContainer>();
    case TAContainment::Everything:
      if (std::unique_ptr<ControlGroup> group = ControlGroup::Make()) {
        return std::make_unique<ControlGroupContainer>(std::move(group));
      }
      return std::make_unique<MarkedProcesses>();
  }
  return nullptr;
}

std::unique_ptr<Container> Container::MakeForTree(pid_t root) {
  auto tree = std::make_unique<TreeContainer>();
  tree->NoteStart(root);
  return tree;
}

const char* Container::MeansOf(TAContainment containment) {
  switch (containment) {
    case TAContainment::Tree:
      return "tree";
    case TAContainment::Group:
      return "group";
    case TAContainment::Everything:
      return ControlGroup::IsPossible() ? "cgroup" : "marks";
  }
  return "";
}

}  // namespace vor
