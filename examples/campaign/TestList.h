#ifndef VOR_EXAMPLES_CAMPAIGN_TESTLIST_H
#define VOR_EXAMPLES_CAMPAIGN_TESTLIST_H

#include <string>
#include <vector>

namespace campaign {

/// One line of a test list: `name command...`.
struct Test {
  std::string name;     ///< of the form a or a/b; never leaves the results folder
  std::string command;  ///< as TAProcess::Start takes it
};

/// True if a name can become a file name below a folder and be shown: no step of it leads up or
/// out, and it holds no control characters of Unicode, marks of text direction among them.
bool IsSafeName(const std::string& name);

/// Reads the test list \a path: one test a line, comment lines as IsComment tells them.  Returns
/// "" and the tests in the order of the file, or one line that says what is wrong with it.
std::string LoadTestList(const std::string& path, std::vector<Test>* tests);

/// The tests whose names \a expression selects (see TestMatchWithLogExp), in the same order.
std::vector<Test> SelectTests(const std::vector<Test>& tests, const std::string& expression);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_TESTLIST_H
