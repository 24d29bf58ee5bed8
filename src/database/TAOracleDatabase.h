#ifndef VOR_DATABASE_TAORACLEDATABASE_H
#define VOR_DATABASE_TAORACLEDATABASE_H

#include "database/TADatabase.h"

/// An account of an Oracle database, used through the command-line programs of that database,
/// which have to be in PATH: sqlldr and sqlplus.
///
/// Both operations build one command line and run it through the shell, with the caller's standard
/// input, output and error; what the programs print is not read.  The caller flushes its own
/// output first if the order matters.
///
/// Nothing is quoted, and callers rely on it: names and passwords with blanks or characters that
/// mean something to the shell reach it as they are.  Never pass a text that comes from elsewhere
/// without a check.  While a program runs, the password is part of a command line that other users
/// of the machine can see.
///
/// Errors:    the result of system() is returned unchanged: 0 for success, otherwise a wait
///            status, or -1; that too where the process ignores the end of its children (see
///            TAProcess::ZombiClean).  A process without the environment variable PATH ends.
/// Threads:   as TADatabase; commands of distinct accounts may run at once.
class VOR_API TAOracleDatabase : public TADatabase {
 public:
  TAOracleDatabase(VorString user, VorString password, VorString connection) noexcept;

  /// Runs "sqlldr userid=USER/PASSWORD@CONNECTION control=CONTROL data=DATA".
  int SQLLoader(TAFileName control, TAFileName data) noexcept override;
  /// Runs "sqlplus -s USER/PASSWORD@CONNECTION @SCRIPT".
  int SQL(TAFileName script) noexcept override;
};

#endif  // VOR_DATABASE_TAORACLEDATABASE_H
