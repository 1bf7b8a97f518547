// The embedded engine: a SQLite database file, opened read-only for the
// component (or writable for setting up a suite database).
#pragma once

#include <memory>

#include "db/Driver.h"

namespace kavrin::db::sqlite {

// Opens the file at `path` (UTF-8). Throws Error when it cannot be opened or
// is not a database.
std::unique_ptr<Connection> OpenFile(const std::string& path, bool writable);

}  // namespace kavrin::db::sqlite
