#include "process/Container.h"

#include <unistd.h>

#include "process/GroupContainer.h"
#include "process/TreeContainer.h"

namespace vor {

void Container::Entry::Apply() const {
  if (controlGroup >= 0) {
    [[maybe_unused]] const ssize_t written = write(controlGroup, "0", 1);
  }
  if (ownGroup) setpgid(0, 0);
}

std::unique_ptr<Container> Container::Make(TAContainment containment) {
  switch (containment) {
    case TAContainment::Tree:
      return nullptr;
    case TAContainment::Group:
    case TAContainment::Everything:
      return std::make_unique<GroupContainer>();
  }
  return nullptr;
}

std::unique_ptr<Container> Container::MakeForTree(pid_t root) {
  auto tree = std::make_unique<TreeContainer>();
  tree->NoteStart(root);
  return tree;
}

const char* Container::MeansOf(TAContainment containment) {
  return containment == TAContainment::Tree ? "tree" : "group";
}

}  // namespace vor
