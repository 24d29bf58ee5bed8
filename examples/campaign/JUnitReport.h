#ifndef VOR_EXAMPLES_CAMPAIGN_JUNITREPORT_H
#define VOR_EXAMPLES_CAMPAIGN_JUNITREPORT_H

#include <string>
#include <vector>

#include "TestResult.h"

namespace campaign {

/// The results in the XML form that continuous-integration servers read.  A test that did not pass
/// carries the end of its log file.  The text is well-formed whatever bytes names and logs hold.
std::string MakeJUnitReport(const std::vector<TestResult>& results, double seconds);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_JUNITREPORT_H
