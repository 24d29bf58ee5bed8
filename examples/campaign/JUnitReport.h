#ifndef VOR_EXAMPLES_CAMPAIGN_JUNITREPORT_H
#define VOR_EXAMPLES_CAMPAIGN_JUNITREPORT_H

#include <string>
#include <vector>

#include "TestResult.h"

namespace campaign {

/// The results as the JUnit XML that continuous-integration servers read.  A test that failed
/// carries the end of its log.  The text is well-formed whatever bytes names and logs hold.
/// \a seconds is the time of the whole campaign.
std::string MakeJUnitReport(const std::vector<TestResult>& results, double seconds);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_JUNITREPORT_H
