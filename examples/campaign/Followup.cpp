#include "Followup.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Options.h"

namespace campaign {
namespace {

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

// One line for each test: name, result, return code, seconds and the code of the responsible.
std::string ToRecords(const std::vector<TestResult>& results, const Owners& owners) {
  std::string text;
  for (const TestResult& result : results) {
    char seconds[32];
    snprintf(seconds, sizeof seconds, "%.3f", result.seconds);
    text += Quoted(result.name) + "," + Word(result.outcome) + "," +
            std::to_string(result.returnCode) + "," + seconds + "," +
            Quoted(owners.CodeOf(result.name)) + "\n";
  }
  return text;
}

// Before anything runs: results that cannot be loaded should not cost a campaign.
std::string CheckTemporaryFolder() {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error);
  if (error) return "no folder for temporary files: " + error.message();
  return CheckPlainPath(folder);
}

/// A file that is removed at the end of its scope.
class TemporaryFile {
 public:
  TemporaryFile() {
    std::error_code ignored;
    _path = std::filesystem::temp_directory_path(ignored) / "campaign_XXXXXX.csv";
    const int file = mkstemps(_path.data(), static_cast<int>(strlen(".csv")));
    if (file < 0) _path.clear();
    if (file >= 0) close(file);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { unlink(_path.c_str()); }

  /// "" if it could not be made, errno then tells why.
  const std::string& Path() const { return _path; }

 private:
  std::string _path;
};

}  // namespace

std::string Followup::Prepare(const Options& options) {
  std::string problem;
  if (!options.owners.empty()) {
    problem = _owners.Load(options.owners[0], options.owners[1]);
    _hasOwners = true;
  }
  if (problem.empty() && !options.load.empty()) {
    problem = _database.Prepare(options.load);
    if (!options.resultsFolder.empty()) _resultsFile = options.resultsFolder + "/campaign.csv";
    if (problem.empty()) {
      problem = _resultsFile.empty() ? CheckTemporaryFolder() : CheckPlainPath(_resultsFile);
    }
  }
  return problem;
}

std::string Followup::Apply(const std::vector<TestResult>& results) const {
  if (_hasOwners) fputs(_owners.ListFailures(results).c_str(), stdout);
  fflush(stdout);
  const bool isComplete =
      Count(results, Outcome::kInterrupted) == 0 && Count(results, Outcome::kNotRun) == 0;
  if (!_database.IsWanted() || results.empty() || !isComplete) return "";
  return LoadResults(results);
}

std::string Followup::LoadResults(const std::vector<TestResult>& results) const {
  const std::unique_ptr<TemporaryFile> temporary =
      _resultsFile.empty() ? std::make_unique<TemporaryFile>() : nullptr;
  const std::string path = temporary == nullptr ? _resultsFile : temporary->Path();
  std::ofstream file;
  if (!path.empty()) file.open(path, std::ios::binary);
  file << ToRecords(results, _owners);
  file.close();
  if (!file) return "cannot write the results to load: " + std::string(strerror(errno));
  return _database.Load(path);
}

}  // namespace campaign
