// A suite database built by a test: the suite's tables, filled with the rows
// the test writes, and read back through the kit exactly as a host would.
//
// The engine comes from the environment. By default each SuiteDb is a
// temporary SQLite file. With KAVRIN_TEST_POSTGRES naming the state file of
// the PostgreSQL server that the test harness started (tests/postgres/
// server.sh), each SuiteDb is a fresh database on that server, copied from a
// template that holds the suite's tables (and the demo company), reached
// through ODBC.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "kavrin/String.h"

namespace kavrin::testing {

// True when the suite runs against the PostgreSQL server.
bool OnPostgres();
// True when the suite's connections compile every text where it is run
// (KAVRIN_TEST_STATEMENT_CACHE=off), instead of keeping statements per shape.
bool CompilesEveryText();
// The source of the errors the engine under test raises.
inline StringView EngineSource() {
  return OnPostgres() ? sources::kOdbc : sources::kSqlite;
}

// A unique temporary directory, removed with its contents by the destructor.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

class SuiteDb {
 public:
  // The suite's tables, empty, or holding the demo company.
  explicit SuiteDb(bool demo = false);
  // A database holding nothing at all, for creating the tables into.
  static std::unique_ptr<SuiteDb> Blank();
  ~SuiteDb();
  SuiteDb(const SuiteDb&) = delete;
  SuiteDb& operator=(const SuiteDb&) = delete;

  // Runs statements that write (UTF-8), through a separate writable connection.
  void Exec(const std::string& sql) const;

  // "sqlite:PATH" or "odbc:Driver=...;Database=...".
  String ConnectionString() const { return connection_string_; }
  // A kit connection opened read-only, as a host opens it.
  std::shared_ptr<KitDatabase> Open() const { return KitDatabase::Open(ConnectionString()); }

  // The SQLite file (empty on a server).
  const std::string& path() const { return path_; }

  // Ends every session connected to this database from elsewhere, as a
  // server restart or a dropped network would (server only).
  void DropSessions() const;

 private:
  enum class Contents { kNothing, kTables, kDemo };
  explicit SuiteDb(Contents contents);

  std::unique_ptr<TempDir> dir_;
  std::string path_;
  std::string server_database_;
  String connection_string_;
};

// The PostgreSQL server the harness started: an ODBC connection string for
// one of its databases.
String ServerConnectionString(const std::string& database);

// Records every text sent through a kit connection from now on.
std::shared_ptr<std::vector<String>> TraceQueries(KitDatabase& db);

}  // namespace kavrin::testing
