#include "DatabaseLoad.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>

#include <fstream>
#include <string_view>

#include "InputFile.h"
#include "VorToolsInfrastructure.h"

namespace campaign {
namespace {

// Characters that mean nothing special to a shell or to the loader.
constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.:+=%#!";

bool IsPlain(std::string_view text, std::string_view alsoAllowed) {
  for (const char c : text) {
    const bool isPlain = kPlain.find(c) != kPlain.npos || alsoAllowed.find(c) != alsoAllowed.npos;
    if (!isPlain) return false;
  }
  return !text.empty();
}

// Stores what follows prefix; false if text does not start with it.
bool TakeAfter(std::string_view prefix, const std::string& text, std::string* rest) {
  if (!text.starts_with(prefix)) return false;
  *rest = text.substr(prefix.size());
  return true;
}

// The messages name no source: by mistake it may be the password itself.
std::string TakePassword(const std::string& given, std::string* password) {
  std::string source;
  if (TakeAfter("env:", given, &source)) {
    char* const value = getenv(source.c_str());
    if (value == nullptr) return "the environment variable that holds the password is not set";
    *password = value;
    explicit_bzero(value, strlen(value));  // /proc still shows the place
    unsetenv(source.c_str());
  } else if (TakeAfter("file:", given, &source)) {
    std::ifstream file(source);
    if (!std::getline(file, *password)) return "cannot read the file that holds the password";
    if (password->ends_with('\r')) password->pop_back();
  } else {
    *password = given;
  }
  return "";
}

}  // namespace

std::string CheckPlainPath(const std::string& path) {
  if (IsPlain(path, "/@")) return "";
  return "the database loader cannot be given a file named '" + path +
         "': use letters, digits and _-.:+=%#!/@ only";
}

std::string DatabaseLoad::Prepare(const std::vector<std::string>& words) {
  std::string problem = CheckPlainPath(words[0]);
  if (problem.empty()) problem = TakePassword(words[2], &_password);
  if (!problem.empty()) return problem;
  // Not quoted: with the values in a wrong order, any of them may be the password.
  constexpr const char* kUnusable =
      " is empty or holds characters other than letters, digits and _-.:+=%#!";
  if (!IsPlain(words[1], "")) return std::string("the user") + kUnusable;
  if (!IsPlain(_password, "")) return std::string("the password") + kUnusable;
  if (!IsPlain(words[3], "/")) return std::string("the connection") + kUnusable;
  if (getenv("PATH") == nullptr) return "PATH is not set, so sqlldr cannot be found";
  std::ifstream control;
  problem = OpenInput(words[0], &control);
  if (!problem.empty()) return problem;
  _control = words[0];
  _user = words[1];
  _connection = words[3];
  return "";
}

std::string DatabaseLoad::Load(const std::string& dataFile) const {
  std::string problem = CheckPlainPath(dataFile);
  if (!problem.empty()) return problem;
  TAOracleDatabase database{VorString(_user), VorString(_password), VorString(_connection)};
  const int status = database.SQLLoader(_control.c_str(), dataFile.c_str());
  if (status == 0) return "";
  return "the database loader sqlldr failed: " +
         (WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status))
                            : "wait status " + std::to_string(status));
}

}  // namespace campaign
