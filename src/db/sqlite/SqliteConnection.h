// The embedded engine: a SQLite database file, opened read-only for the
// component (or writable for setting up a suite database).
#pragma once

#include <chrono>
#include <memory>

#include "db/Driver.h"

namespace kavrin::db::sqlite {

// How long a statement of a read-only connection may take, from its start to
// its last row, before it is interrupted and fails as a timeout (as ADO's
// command timeout does, and with the same default).
inline constexpr std::chrono::milliseconds kStatementTimeLimit{30000};

// Opens the file at `path` (UTF-8). Throws Error when it cannot be opened or
// is not a database. With `statement_cache`, the connection keeps the
// compiled statements of the texts it runs, one per shape (see
// db/StatementShape.h); without, it compiles every text it is given.
std::unique_ptr<Connection> OpenFile(const std::string& path, bool writable,
                                     std::chrono::milliseconds time_limit = kStatementTimeLimit,
                                     bool statement_cache = true);

}  // namespace kavrin::db::sqlite
