#include "DatabaseLoad.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>

#include <fstream>
#include <string_view>

#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

// Neither a shell nor the loader sees more in these than characters of a word.
constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.:+=%#!";

bool IsPlain(std::string_view text, std::string_view alsoAllowed) {
  for (const char c : text) {
    const bool isPlain = kPlain.find(c) != kPlain.npos || alsoAllowed.find(c) != alsoAllowed.npos;
    if (!isPlain) return false;
  }
  return !text.empty();
}

// What follows prefix; false if text does not start with it.
bool IsBehind(std::string_view prefix, const std::string& text, std::string* rest) {
  if (!text.starts_with(prefix)) return false;
  *rest = text.substr(prefix.size());
  return true;
}

std::string TakePassword(const std::string& given, std::string* password) {
  std::string source;
  if (IsBehind("env:", given, &source)) {
    const char* const value = getenv(source.c_str());
    if (value == nullptr) return "the environment variable " + source + " is not set";
    *password = value;
    unsetenv(source.c_str());
  } else if (IsBehind("file:", given, &source)) {
    std::ifstream file(source);
    if (!std::getline(file, *password)) return "cannot read a password from " + source;
    if (password->ends_with('\r')) password->pop_back();
  } else {
    *password = given;
  }
  return "";
}

}  // namespace

std::string CheckPlainPath(const std::string& path) {
  if (IsPlain(path, "/@")) return "";
  return "the database loader cannot be given a file named '" + path + "'";
}

std::string DatabaseLoad::Prepare(const std::vector<std::string>& words) {
  std::string problem = CheckPlainPath(words[0]);
  if (problem.empty()) problem = TakePassword(words[2], &_password);
  if (!problem.empty()) return problem;
  constexpr const char* kUnusable = "' cannot be given to the database loader";
  if (!IsPlain(words[1], "")) return "the user '" + words[1] + kUnusable;
  if (!IsPlain(_password, "")) {
    return "the password holds characters that cannot be given to the database loader";
  }
  if (!IsPlain(words[3], "/")) return "the connection '" + words[3] + kUnusable;
  if (getenv("PATH") == nullptr) return "PATH is not set, so the database loader is not found";
  if (!std::ifstream(words[0])) return "cannot read " + words[0] + ": " + strerror(errno);
  _control = words[0];
  _user = words[1];
  _connection = words[3];
  return "";
}

std::string DatabaseLoad::Load(const std::string& dataFile) const {
  std::string problem = CheckPlainPath(dataFile);
  if (!problem.empty()) return problem;
  fflush(stdout);  // the loader writes there too
  TAOracleDatabase database{VorString(_user), VorString(_password), VorString(_connection)};
  const int status = database.SQLLoader(_control.c_str(), dataFile.c_str());
  if (status == 0) return "";
  return "the database loader failed: " +
         (WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status))
                            : "wait status " + std::to_string(status));
}

}  // namespace campaign
