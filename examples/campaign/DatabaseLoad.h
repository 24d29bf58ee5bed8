#ifndef VOR_EXAMPLES_CAMPAIGN_DATABASELOAD_H
#define VOR_EXAMPLES_CAMPAIGN_DATABASELOAD_H

#include <string>
#include <vector>

namespace campaign {

/// Hands files of records to the loader program of a database.
///
/// The loader gets its arguments, the password among them, through a shell on a command line that
/// others can see; whatever a shell would take for more than a plain word is refused.
class DatabaseLoad {
 public:
  /// Takes the control file, user, password and connection, in this order.  A password of the form
  /// env:NAME is the value of that environment variable, which is then wiped out of the environment
  /// so that tests do not see it; file:PATH is the first line of that file.  Returns "" or one line
  /// that says what is wrong.  It quotes no value but the file, so that the password is not shown
  /// even if a shell put it behind env: or it stands in the place of the user.
  std::string Prepare(const std::vector<std::string>& words);

  /// True if Prepare has succeeded.
  bool IsWanted() const { return !_control.empty(); }

  /// Loads \a dataFile and waits until that has ended.  Returns "" or one line that says what went
  /// wrong.
  std::string Load(const std::string& dataFile) const;

 private:
  std::string _control;
  std::string _user;
  std::string _password;
  std::string _connection;
};

/// "" if a shell takes \a path for one plain word, else one line that says that it does not.
std::string CheckPlainPath(const std::string& path);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_DATABASELOAD_H
