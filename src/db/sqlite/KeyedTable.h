// A table read in its own order through its rowid: the rows after a key,
// the last row and the rows matching text comparisons, each one statement
// that reads no row before those it answers.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "db/sqlite/Statements.h"

namespace kavrin::db::sqlite {

// What a table read by key needs: its name as the caller wrote it, the name
// under which its rowid is selected, and the columns of SELECT *.
struct TableShape {
  bool utf8 = true;  // the database keeps its texts in UTF-8
  std::string name;
  std::string key;
  std::vector<ColumnInfo> columns;
  std::optional<DataVersion> verified_at;
};

// How the table `name` is read by key, or nullptr when SELECT * FROM name
// does not give its rows in rowid order: a view, a table without rowids, a
// virtual table, a name qualified by a schema, or a plan that reads the
// rows through an index. The shape holds for data version `version`.
std::shared_ptr<const TableShape> ReadTableShape(sqlite3* db, Describer& describer,
                                                 Watchdog& watchdog, StringView name, bool utf8,
                                                 std::optional<DataVersion> version);

// The table of `shape` on `db`, its statements kept in `cache` when there is
// one.
std::unique_ptr<Table> OpenKeyedTable(sqlite3* db, std::shared_ptr<Watchdog> watchdog,
                                      std::shared_ptr<const TableShape> shape,
                                      std::shared_ptr<StatementCache> cache);

}  // namespace kavrin::db::sqlite
