// A database server reached through the ODBC driver manager (unixODBC), with
// the driver's wide-character API: the suite's SQL Server through FreeTDS, or
// PostgreSQL through psqlODBC.
#pragma once

#include <cstdint>
#include <memory>

#include "db/Driver.h"

namespace kavrin::db::odbc {

// How long the driver may take to log in, to answer a request other than a
// statement, to run a statement that reads, and to run a setup script. Each
// is a request to the driver; one that does not know it keeps its own.
struct Timeouts {
  unsigned login_seconds = 15;
  unsigned connection_seconds = 30;
  unsigned query_seconds = 30;
  unsigned script_seconds = 300;
};

// Connects with an ODBC connection string ("Driver={...};Server=...;...").
// Unless `writable`, the connection asks the driver for read-only access (on
// PostgreSQL also a read-only session, so the server refuses writes) and
// refuses statements that do not read. Throws Error (kProviderFailure) when
// the driver cannot connect.
// With `statement_cache`, on PostgreSQL through psqlODBC, a statement that
// reads is prepared once per shape (see db/StatementShape.h) and executed
// with its values bound; without it, and on other servers, every text is
// executed directly.
std::unique_ptr<Connection> Connect(StringView connection_string, bool writable,
                                    const Timeouts& timeouts = {}, bool statement_cache = true);

// How many statements this process has sent to servers through ODBC, each
// one round trip: what the benchmark counts per call.
uint64_t StatementsSent();

}  // namespace kavrin::db::odbc
