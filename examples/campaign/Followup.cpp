#include "Followup.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>

#include "Options.h"
#include "Output.h"
#include "OutputFile.h"

namespace campaign {
namespace {

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

// One line for each test: name, result, return code, seconds, code of the responsible.
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

/// A file that is removed at the end of its scope.
class TemporaryFile {
 public:
  TemporaryFile() {
    std::error_code error;
    _path = std::filesystem::temp_directory_path(error) / "campaign_XXXXXX.csv";
    const int file = error ? -1 : mkstemps(_path.data(), static_cast<int>(strlen(".csv")));
    if (file >= 0) {
      close(file);
      return;
    }
    _problem = error ? "no directory for temporary files, set TMPDIR to one: " + error.message()
                     : "cannot write " + _path + ": " + strerror(errno) +
                           ": set TMPDIR to another directory";
    _path.clear();
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { unlink(_path.c_str()); }

  const std::string& Path() const { return _path; }
  /// "" or one line that says why there is no such file.
  const std::string& Problem() const { return _problem; }

 private:
  std::string _path;
  std::string _problem;
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
    if (!options.resultsDirectory.empty())
      _resultsFile = options.resultsDirectory + "/campaign.csv";
    if (problem.empty()) {
      // Checked now, so that the campaign does not run in vain.
      const TemporaryFile trial;
      problem = !_resultsFile.empty()      ? CheckPlainPath(_resultsFile)
                : !trial.Problem().empty() ? trial.Problem()
                                           : CheckPlainPath(trial.Path());
    }
  }
  return problem;
}

std::string Followup::Apply(const std::vector<TestResult>& results) const {
  if (_hasOwners) Print(_owners.ListFailures(results));
  const bool isComplete =
      Count(results, Outcome::kInterrupted) == 0 && Count(results, Outcome::kNotRun) == 0;
  if (!_database.IsWanted() || results.empty() || !isComplete) return "";
  return LoadResults(results);
}

std::string Followup::LoadResults(const std::vector<TestResult>& results) const {
  const std::unique_ptr<TemporaryFile> temporary =
      _resultsFile.empty() ? std::make_unique<TemporaryFile>() : nullptr;
  const std::string path = temporary == nullptr ? _resultsFile : temporary->Path();
  if (path.empty()) return temporary->Problem();
  const std::string problem = WriteWhole(path, ToRecords(results, _owners));
  return problem.empty() ? _database.Load(path) : problem;
}

}  // namespace campaign
