#ifndef VOR_DATABASE_TADATABASE_H
#define VOR_DATABASE_TADATABASE_H

#include "base/Export.h"
#include "base/VorString.h"
#include "containers/TARefCounter.h"
#include "filenames/TAFileName.h"

/// An account of a database into which tools load their results, whatever the kind of database.
///
/// Make an object of a derived class, and Release it at the end; whoever keeps it besides its
/// maker calls AddRef first.
///
/// Ownership: keeps copies of the three texts, the password as plain text.
/// Threads:   references to one account, and the account itself, belong to one thread at a time.
class VOR_API TADatabase : public TARefCounter {
 public:
  /// An account \a user with its \a password on the instance that \a connection identifies.
  /// Nothing is connected or checked.
  TADatabase(VorString user, VorString password, VorString connection) noexcept;
  TADatabase(const TADatabase&) = delete;
  TADatabase& operator=(const TADatabase&) = delete;
  ~TADatabase() override;

  /// Loads the records of \a data as \a control describes them.  Returns 0 on success.
  virtual int SQLLoader(TAFileName control, TAFileName data) = 0;
  /// Runs the statements of \a script.  Returns 0 on success.
  virtual int SQL(TAFileName script) = 0;

 protected:
  VorString _user;
  VorString _password;
  VorString _connection;
  // Empty and not used here: room for what other kinds of database need.
  VorString _first;
  VorString _second;
};

#endif  // VOR_DATABASE_TADATABASE_H
