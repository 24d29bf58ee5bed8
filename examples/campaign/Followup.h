#ifndef VOR_EXAMPLES_CAMPAIGN_FOLLOWUP_H
#define VOR_EXAMPLES_CAMPAIGN_FOLLOWUP_H

#include <string>
#include <vector>

#include "DatabaseLoad.h"
#include "Owners.h"
#include "TestResult.h"

namespace campaign {

struct Options;

/// The processing of the results of a campaign besides the report: failures are listed by
/// responsible, and the results are loaded into a database.
class Followup {
 public:
  /// Reads and checks the files that the options name, before any test runs.  Returns "" or one
  /// line that says what is wrong.
  std::string Prepare(const Options& options);

  /// Lists failures by responsible and loads the results, if the options request it.  After an
  /// interrupt the results are incomplete and not loaded.  Returns "" or one line that says what
  /// failed.
  std::string Apply(const std::vector<TestResult>& results) const;

 private:
  std::string LoadResults(const std::vector<TestResult>& results) const;

  bool _hasOwners = false;
  Owners _owners;
  DatabaseLoad _database;
  std::string _resultsFile;  // "" for a temporary one
};

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_FOLLOWUP_H
