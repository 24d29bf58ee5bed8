#ifndef VOR_EXAMPLES_CAMPAIGN_DATABASELOAD_H
#define VOR_EXAMPLES_CAMPAIGN_DATABASELOAD_H

#include <string>
#include <vector>

namespace campaign {

/// Runs the loader program of a database on files of records.
///
/// The loader gets its arguments, which include the password, through a shell and on a command line
/// that other users can see.  Anything but one plain word of the shell is refused.
class DatabaseLoad {
 public:
  /// Takes the control file, user, password and connection, in this order.  A password env:NAME is
  /// the value of that environment variable, which is then removed so that tests do not see it;
  /// file:PATH is the first line of that file.
  ///
  /// Returns "" or one line with the problem.  The line quotes only the name of the control file:
  /// any other value can be the password by mistake, for example after env: if a shell replaced a
  /// variable.
  std::string Prepare(const std::vector<std::string>& words);

  /// True if Prepare has succeeded.
  bool IsWanted() const { return !_control.empty(); }

  /// Loads \a dataFile and waits for the end.  Returns "" or one line that says why it failed.
  std::string Load(const std::string& dataFile) const;

 private:
  std::string _control;
  std::string _user;
  std::string _password;
  std::string _connection;
};

/// Returns "" if \a path is one plain word for a shell, else one line with the problem.
std::string CheckPlainPath(const std::string& path);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_DATABASELOAD_H
