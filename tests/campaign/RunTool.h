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

inline std::string ReadAll(FILE* stream) {
  std::string text;
  for (int c; (c = getc(stream)) != EOF;) text.push_back(static_cast<char>(c));
  return text;
}

/// Runs the tool campaign through a shell; \a before may set its environment.
inline Outcome Campaign(const std::string& arguments, const std::string& before = "") {
  Outcome run;
  FILE* stream = popen((before + VOR_CAMPAIGN " " + arguments + " 2>&1").c_str(), "r");
  run.output = ReadAll(stream);
  run.status = WEXITSTATUS(pclose(stream));
  return run;
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
