// The benchmark's PostgreSQL server: the one tests/postgres/server.sh starts
// on loopback, and the generated suites copied into it.
#pragma once

#include <string>

namespace kavrin::bench {

struct Server {
  std::string host;
  std::string port;
  std::string user;
  // The ODBC connection string for `database`, with the "odbc:" prefix.
  std::string ConnectionString(const std::string& database) const;
};

// Reads the state file server.sh wrote, and points the driver manager at the
// driver it registered. Throws when the file cannot be read.
Server ReadServer(const std::string& state_file);

// Creates database `database` on `server` with the suite's tables (and their
// indexes) and copies every row of the SQLite suite at `sqlite_path` into
// it, a table at a time through COPY in psql; then analyzes it.
void CopySuiteToServer(const Server& server, const std::string& sqlite_path,
                       const std::string& database);

}  // namespace kavrin::bench
