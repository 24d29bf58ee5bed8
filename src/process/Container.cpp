#include "process/Container.h"

namespace vor {

void Container::ReapOrphans() {}

}  // namespace vor
