#ifndef VOR_TESTS_CAMPAIGN_RUNTOOL_H
#define VOR_TESTS_CAMPAIGN_RUNTOOL_H

#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "support/TempDir.h"

struct Outcome {
  int status = -1;
  std::string output;  // standard output and standard error
};

/// Waits for the end of what popen has started.
inline Outcome End(FILE* stream) {
  Outcome run;
  for (int c; (c = getc(stream)) != EOF;) run.output.push_back(static_cast<char>(c));
  run.status = WEXITSTATUS(pclose(stream));
  return run;
}

/// Runs the tool campaign through a shell; \a before may set its environment.
inline Outcome Campaign(const std::string& arguments, const std::string& before = "") {
  return End(popen((before + VOR_CAMPAIGN " " + arguments + " 2>&1").c_str(), "r"));
}

class CampaignTest : public testing::Test {
 protected:
  /// A test list with this content, as the option that names it.
  std::string Tests(const std::string& content) const {
    return "--tests " + _dir.Write("tests.list", content) + " ";
  }
  bool Exists(const char* name) const { return access((_dir / name).c_str(), F_OK) == 0; }

  TempDir _dir;
};

#endif  // VOR_TESTS_CAMPAIGN_RUNTOOL_H
