#include <VorToolsInfrastructure.h>
#include <VorToolsInfrastructure/process/TAProcessList.h>

#include <cstdio>

int main() {
  TAFileName name("/a/./b/../c");
  const bool matches = TestMatchWithLogExp(VorString(name), "/a/*&&!*.o") == 1;
  std::printf("%s %s\n", static_cast<const char*>(name), matches ? "matches" : "does not match");
}
