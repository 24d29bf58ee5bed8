#ifndef VOR_DATABASE_TAORACLEDATABASE_H
#define VOR_DATABASE_TAORACLEDATABASE_H

#include "TADatabase.h"

/// An account of an Oracle database, used through the command-line programs sqlldr and sqlplus of
/// that database.  Both must be in PATH.
///
/// Each operation builds one command line and runs it through the shell with the caller's standard
/// input, output and error.  The output of the programs is not read.  If the order of the output
/// matters, the caller flushes its own first.
///
/// Nothing is quoted, and callers rely on it: blanks and special characters of the shell reach it
/// unchanged, in file names and in passwords.  Check texts from untrusted sources before you pass
/// them.  While a program runs, other users of the machine can see the password in its command
/// line.
///
/// Errors:    the result of system() is returned unchanged: 0 for success, otherwise a wait status,
///            or -1.  If the process ignores SIGCHLD (see TAProcess::ZombiClean), the result is -1
///            even for success.  Without the environment variable PATH, an operation ends the
///            process with FATAL.
/// Threads:   as TADatabase; commands of distinct accounts may run at the same time.
class VOR_API TAOracleDatabase : public TADatabase {
 public:
  TAOracleDatabase(VorString user, VorString password, VorString connection) noexcept;

  /// Runs "sqlldr userid=USER/PASSWORD@CONNECTION control=CONTROL data=DATA".
  int SQLLoader(TAFileName control, TAFileName data) override;
  /// Runs "sqlplus -s USER/PASSWORD@CONNECTION @SCRIPT".
  int SQL(TAFileName script) override;
};

#endif  // VOR_DATABASE_TAORACLEDATABASE_H
