#ifndef VOR_EXAMPLES_CAMPAIGN_OWNERS_H
#define VOR_EXAMPLES_CAMPAIGN_OWNERS_H

#include <string>
#include <vector>

#include "TestResult.h"
#include "VorToolsInfrastructure.h"

namespace campaign {

/// Who is responsible for which tests.  A test of the name framework/module belongs to whoever is
/// responsible for that module, or else for that framework; what follows the first slash is the
/// module.
class Owners {
 public:
  /// Reads the organisation file and the KVR file (see VorFwModRespHelper).  Returns "" or one line
  /// that says which one cannot be read.
  std::string Load(const std::string& orgFile, const std::string& kvrFile);

  /// The code of the one responsible for a test; "" if none is known.
  std::string CodeOf(const std::string& test) const;

  /// The tests that ran and did not pass, by responsible: code, line of the organisation file,
  /// tests.  "" if there are none.
  std::string ListFailures(const std::vector<TestResult>& results) const;

 private:
  struct Owner;
  Owner Find(const std::string& test) const;

  VorFwModRespHelper _responsibles;
};

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_OWNERS_H
