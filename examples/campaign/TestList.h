#ifndef VOR_EXAMPLES_CAMPAIGN_TESTLIST_H
#define VOR_EXAMPLES_CAMPAIGN_TESTLIST_H

#include <string>
#include <vector>

namespace campaign {

/// One line of a test list: `name command...`.
struct Test {
  std::string name;     ///< of the form a or a/b; stays below the results directory
  std::string command;  ///< as TAProcess::Start takes it
};

/// True if a name can be used as a path below a directory and can be shown: it has no empty, "."
/// or ".." step, and no control characters of Unicode, which include the marks of text direction.
bool IsSafeName(const std::string& name);

/// Reads the test list \a path: one test a line; lines for which IsComment is true are skipped.
/// Returns "" and the tests in the order of the file, or one line that says what is wrong with it.
std::string LoadTestList(const std::string& path, std::vector<Test>* tests);

/// Returns "" or one line with an error that TestMatchWithLogExp would not report: unbalanced
/// parentheses, or && and || in one group.
std::string CheckExpression(const std::string& expression);

/// The tests whose names \a expression selects (see TestMatchWithLogExp), in the same order.
std::vector<Test> SelectTests(const std::vector<Test>& tests, const std::string& expression);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_TESTLIST_H
