#include "Commands.h"

#include <stdio.h>

namespace campaign {

int Refuse(const std::string& problem, int status) {
  fprintf(stderr, "campaign: %s\n", problem.c_str());
  return status;
}

}  // namespace campaign
