// A PostgreSQL table read in its own order through an ODBC connection: the
// order of its rows' physical places (ctid), which is the order a sequential
// scan, and so "SELECT * FROM name", gives them when scans are not
// synchronized (the session turns that off). The key of a row is its ctid as
// one number; the first rows, the rows after a key and the last row are each
// found by a short statement that the server answers from the pages it
// names, without reading the table through.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>

#include "db/Driver.h"

namespace kavrin::db::odbc {

// What reading a table by key needs to know of it, learnt once per
// connection: nullopt inside when the name is no ordinary table (a view, a
// partitioned table, a foreign table) or no table at all.
struct PostgresShape {
  String name;  // as the caller wrote it, unquoted: the server folds it as it does in SELECT *
  std::vector<ColumnInfo> columns;
  // Per column: its collation ignores letter case and width, so that the
  // server's equality holds for every pair of texts the kit calls equal.
  std::vector<bool> case_insensitive;
};

class PostgresTables {
 public:
  // `connection` runs the statements; it outlives this object and every
  // table it opens.
  explicit PostgresTables(Connection& connection) : connection_(connection) {}

  // The table `name` read by key, or nullptr when it cannot be (see
  // PostgresShape). Throws the connection's errors.
  std::unique_ptr<Table> Open(StringView name);

 private:
  std::shared_ptr<const PostgresShape> Learn(StringView name);

  Connection& connection_;
  std::unordered_map<String, std::shared_ptr<const PostgresShape>> shapes_;
};

}  // namespace kavrin::db::odbc
