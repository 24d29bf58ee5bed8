#ifndef VOR_EXAMPLES_CAMPAIGN_OWNERS_H
#define VOR_EXAMPLES_CAMPAIGN_OWNERS_H

#include <string>
#include <vector>

#include "TestResult.h"
#include "VorToolsInfrastructure.h"

namespace campaign {

/// Finds the responsible of each test.  A test is named framework/module, where the module is all
/// that follows the first slash.  It belongs to the responsible of its module, or else to that of
/// its framework.
class Owners {
 public:
  /// Reads the organisation file and the KVR file (see VorFwModRespHelper).  Returns "" or one line
  /// that says which of them cannot be read, and why.
  std::string Load(const std::string& orgFile, const std::string& kvrFile);

  /// The code of a test's responsible; "" if none is known.
  std::string CodeOf(const std::string& test) const;

  /// The tests that did not pass, by responsible: code and line of the organisation file, then the
  /// tests.  Tests that did not run because of an interrupt are left out.  "" if there are none.
  std::string ListFailures(const std::vector<TestResult>& results) const;

 private:
  struct Owner;
  Owner Find(const std::string& test) const;

  VorFwModRespHelper _responsibles;
};

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_OWNERS_H
