#ifndef VOR_EXAMPLES_CAMPAIGN_REPORT_H
#define VOR_EXAMPLES_CAMPAIGN_REPORT_H

#include <string>
#include <vector>

#include "TestResult.h"

namespace campaign {

/// A table of name, result and seconds, the slowest test first, and a line of totals.
/// \a seconds is the time of the whole campaign.
std::string MakeReport(const std::vector<TestResult>& results, double seconds);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_REPORT_H
