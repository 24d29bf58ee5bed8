#ifndef VOR_EXAMPLES_CAMPAIGN_REPORT_H
#define VOR_EXAMPLES_CAMPAIGN_REPORT_H

#include <string>
#include <vector>

#include "TestResult.h"

namespace campaign {

/// A table of name, result and seconds, the slowest first, and a line that sums it up.
/// \a seconds is what the whole campaign took.
std::string MakeReport(const std::vector<TestResult>& results, double seconds);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_REPORT_H
