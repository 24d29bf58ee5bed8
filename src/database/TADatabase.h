#ifndef VOR_DATABASE_TADATABASE_H
#define VOR_DATABASE_TADATABASE_H

#include "../base/Export.h"
#include "../base/VorString.h"
#include "../containers/TARefCounter.h"
#include "../filenames/TAFileName.h"

/// An account of a database into which tools load their results, whatever the kind of database.
///
/// Create an object of a derived class with new, and call Release at the end.  Each further owner
/// calls AddRef first and Release at the end.
///
/// Ownership: keeps copies of the three texts, the password as plain text.
/// Threads:   an account and all references to it belong to one thread at a time.
class VOR_API TADatabase : public TARefCounter {
 public:
  /// The account \a user with \a password on the instance that \a connection identifies.  Does not
  /// connect to it and checks nothing.
  TADatabase(VorString user, VorString password, VorString connection) noexcept;
  TADatabase(const TADatabase&) = delete;
  TADatabase& operator=(const TADatabase&) = delete;
  ~TADatabase() override;

  /// Loads the records of the file \a data as the file \a control describes them.  Returns 0 on
  /// success.
  virtual int SQLLoader(TAFileName control, TAFileName data) = 0;
  /// Runs the statements of \a script.  Returns 0 on success.
  virtual int SQL(TAFileName script) = 0;

 protected:
  VorString _user;
  VorString _password;
  VorString _connection;
  // Empty and not used by this library; for derived classes of tools.
  VorString _first;
  VorString _second;
};

#endif  // VOR_DATABASE_TADATABASE_H
