#include "database/TAOracleDatabase.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "support/TempDir.h"

namespace {

// Programs that note their name and arguments, one a line, and end with 3, first in PATH.
class OracleDatabase : public testing::Test {
 protected:
  OracleDatabase() : _database(*new TAOracleDatabase("scott", "ti$((2*3))ger", "base.world")) {
    for (const char* program : {"sqlldr", "sqlplus"}) {
      const std::string path =
          _dir.Write(program, "#!/bin/sh\nprintf '%s\\n' \"${0##*/}\" \"$@\" > " + _dir / "noted" +
                                  "\nexit 3\n");
      std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    setenv("PATH", (_dir.Path() + ":" + _path).c_str(), 1);
  }
  ~OracleDatabase() override {
    _database.Release();
    setenv("PATH", _path.c_str(), 1);
  }

  const std::string _path = getenv("PATH");
  TempDir _dir;
  TADatabase& _database;
};

using OracleDatabaseDeathTest = OracleDatabase;

}  // namespace

// The shell reads the command: it computes the password, and the blank separates.
TEST_F(OracleDatabase, RunsProgramsThroughTheShell) {
  EXPECT_EQ(_database.SQLLoader("./c.ctl", "some data"), 3 << 8);
  EXPECT_EQ(_dir.Read("noted"),
            "sqlldr\nuserid=scott/ti6ger@base.world\ncontrol=c.ctl\ndata=some\ndata\n");
  EXPECT_EQ(_database.SQL("dir//make.sql"), 3 << 8);
  EXPECT_EQ(_dir.Read("noted"), "sqlplus\n-s\nscott/ti6ger@base.world\n@dir/make.sql\n");
}

TEST_F(OracleDatabaseDeathTest, NeedsASearchPath) {
  unsetenv("PATH");
  constexpr const char* kMessage = "TAOracleDatabase::SQLLoader, no PATH variable set";
  EXPECT_DEATH(_database.SQLLoader("c", "d"), kMessage);
  EXPECT_DEATH(_database.SQL("s"), kMessage);
}
