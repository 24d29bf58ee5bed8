#ifndef VOR_EXAMPLES_CAMPAIGN_FOLLOWUP_H
#define VOR_EXAMPLES_CAMPAIGN_FOLLOWUP_H

#include <string>
#include <vector>

#include "DatabaseLoad.h"
#include "Owners.h"
#include "TestResult.h"

namespace campaign {

struct Options;

/// What becomes of the results of a campaign besides the report: whoever is responsible for a
/// failure is named, and a database gets the results.
class Followup {
 public:
  /// Reads what the options name, before anything runs.  Returns "" or one line that says what is
  /// wrong.
  std::string Prepare(const Options& options);

  /// Shows failures by responsible and loads the results, each if it is wanted.  Results that an
  /// interrupt made incomplete are not loaded.  Returns "" or one line that says what went wrong.
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
