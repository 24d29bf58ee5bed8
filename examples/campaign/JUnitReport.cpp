#include "JUnitReport.h"

#include <stdio.h>
#include <time.h>

#include <algorithm>

#include "InputFile.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

constexpr long long kLogTail = 8192;  // bytes of a log file that are kept

std::string Attribute(const char* name, const std::string& value) {
  return std::string(" ") + name + "=\"" +
         std::string(EscapeXmlAttribute(VorString(value)).View()) + "\"";
}

std::string Seconds(double seconds) {
  char text[32];
  snprintf(text, sizeof text, "%.3f", seconds);
  return text;
}

std::string Timestamp() {
  const time_t now = time(nullptr);
  struct tm local = {};
  localtime_r(&now, &local);
  char text[32];
  strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
  return text;
}

std::string LogTail(const std::string& path) {
  const RegularFile file(path);
  const long long size = std::min(file.Size(), kLogTail);
  return file.Read(file.Size() - size, static_cast<std::size_t>(size));
}

// The class of a test named a/b is a.
std::string ClassName(const std::string& name) {
  const std::size_t slash = name.rfind('/');
  return slash == std::string::npos ? "campaign" : name.substr(0, slash);
}

std::string TestCase(const TestResult& result) {
  std::string text = "    <testcase" + Attribute("name", result.name) +
                     Attribute("classname", ClassName(result.name)) +
                     Attribute("time", Seconds(result.seconds));
  if (result.outcome == Outcome::kPassed) return text + "/>\n";
  text += ">\n";
  if (result.outcome == Outcome::kNotRun) {
    text += "      <skipped" + Attribute("message", Describe(result)) + "/>\n";
  } else {
    text += "      <failure" + Attribute("message", Describe(result)) + ">" +
            std::string(EscapeXml(VorString(LogTail(result.logFile))).View()) + "</failure>\n";
  }
  return text + "    </testcase>\n";
}

}  // namespace

std::string MakeJUnitReport(const std::vector<TestResult>& results, double seconds) {
  const int total = static_cast<int>(results.size());
  const int skipped = Count(results, Outcome::kNotRun);
  const int failures = total - skipped - Count(results, Outcome::kPassed);
  const std::string counts =
      Attribute("tests", std::to_string(total)) + Attribute("failures", std::to_string(failures)) +
      Attribute("errors", "0") + Attribute("skipped", std::to_string(skipped)) +
      Attribute("time", Seconds(seconds));
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts +
                     ">\n  <testsuite name=\"campaign\"" + counts +
                     Attribute("timestamp", Timestamp()) +
                     Attribute("hostname", GetHostName().CastToCharPtr()) + ">\n";
  for (const TestResult& result : results) text += TestCase(result);
  return text + "  </testsuite>\n</testsuites>\n";
}

}  // namespace campaign
