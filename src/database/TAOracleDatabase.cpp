#include "database/TAOracleDatabase.h"

#include <stdlib.h>

#include <utility>

#include "foundation/Tracing.h"
#include "process/ShellCall.h"

namespace {

// SQL names SQLLoader in the message too: scripts search for exactly this text.
void CheckSearchPath() {
  FATAL(getenv("PATH") == nullptr, "TAOracleDatabase::SQLLoader, no PATH variable set");
}

}  // namespace

TAOracleDatabase::TAOracleDatabase(VorString user, VorString password,
                                   VorString connection) noexcept
    : TADatabase(std::move(user), std::move(password), std::move(connection)) {}

int TAOracleDatabase::SQLLoader(TAFileName control, TAFileName data) {
  CheckSearchPath();
  const VorString command = "sqlldr userid=" + _user + "/" + _password + "@" + _connection +
                            " control=" + VorString(control) + " data=" + VorString(data);
  return vor::RunInShell(command);
}

int TAOracleDatabase::SQL(TAFileName script) {
  CheckSearchPath();
  const VorString command =
      "sqlplus -s " + _user + "/" + _password + "@" + _connection + " @" + VorString(script);
  return vor::RunInShell(command);
}
