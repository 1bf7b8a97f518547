// The engine seam: what the platform layer needs of a database engine, and
// nothing more. A connection runs one read-only statement at a time and hands
// back a cursor of typed rows; drivers live in sqlite/ and odbc/.
//
// Beyond that, a driver may offer what lets a record set fetch rows only when
// asked (each with a generic answer when the driver does not): a data version
// telling whether anything changed, an exact count, rewinding a cursor, and a
// table read in its own order by row key, with the first rows matching text
// comparisons found by the engine.
//
// Errors are kavrin::Error with provider numbers (errors::kProvider*) and the
// engine's own message. Connections are used by one thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin::db {

// One column of a result, as the engine describes it.
struct ColumnInfo {
  String name;                      // the name or alias the statement gives the column
  VarType type = VarType::Variant;  // from the declared type; Variant = by storage class
  String collation;                 // the source column's collation, empty when unknown or not text
};

// A forward cursor over the rows of one statement.
class Cursor {
 public:
  virtual ~Cursor() = default;
  virtual const std::vector<ColumnInfo>& Columns() const = 0;
  // Moves to the next row; false when there is none (the cursor is then done).
  virtual bool Next() = 0;
  // The value of column `index` of the current row, typed as Columns() says.
  virtual Variant Value(size_t index) const = 0;
  // Ends the current read and goes back before the first row, so that the
  // engine holds no lock or result for it; Next() then reads the statement's
  // rows again. False when the cursor cannot (the caller queries again).
  virtual bool Rewind() { return false; }
};

// Which data a connection read: two equal versions mean that nothing was
// committed to the database between the two reads.
struct DataVersion {
  uint64_t engine = 0;  // the engine's counter of committed changes
  uint64_t own = 0;     // changes made through this very connection
  bool operator==(const DataVersion&) const = default;
};

// A text comparison the engine makes exactly as the kit's criteria do:
// column `column` (of Table::Columns()) equal, or not equal, to `text` under
// the server collation named `collation`. A Null never satisfies it.
struct TextCondition {
  size_t column = 0;
  bool equal = true;
  String text;
  String collation;
};

// A cursor over a table's rows, each with its key.
class TableCursor : public Cursor {
 public:
  // The current row's key: keys grow along the table's order.
  virtual int64_t Key() const = 0;
};

// A table read in its own order (the order "SELECT * FROM name" gives its
// rows) through a key that grows along that order, so that a row's
// neighbours, the last row and the first rows matching a comparison are found
// without reading the rows before them.
class Table {
 public:
  virtual ~Table() = default;
  // The columns of "SELECT * FROM name".
  virtual const std::vector<ColumnInfo>& Columns() const = 0;
  // The rows in order, from the first, or from the first after `key`.
  virtual std::unique_ptr<TableCursor> Rows(std::optional<int64_t> after_key) = 0;
  // The last row alone.
  virtual std::unique_ptr<TableCursor> Last() = 0;
  // The rows satisfying every condition, in order.
  virtual std::unique_ptr<TableCursor> Matching(const std::vector<TextCondition>& conditions) = 0;
  // The exact number of rows.
  virtual int64_t Count() = 0;
};

class Connection {
 public:
  virtual ~Connection() = default;

  // Runs one statement that only reads. A text holding more than one
  // statement, or one that would write, is refused without running anything.
  virtual std::unique_ptr<Cursor> Query(StringView sql) = 0;

  // Runs a script of statements that create and fill tables, one after the
  // other, stopping at the first that fails. Only for connections opened with
  // OpenForSetup.
  virtual void ExecuteScript(StringView sql) = 0;

  // The short name of the engine ("sqlite", "odbc").
  virtual String Engine() const = 0;

  // The database product as the engine names it ("SQLite", "PostgreSQL",
  // "Microsoft SQL Server").
  virtual String Dbms() const = 0;
  // Whether running a statement again on unchanged data gives the same rows
  // in the same order, so that a record set may let go of rows it has read
  // and fetch them again when asked. When false, record sets keep every row.
  virtual bool RepeatsRowOrder() const { return false; }

  // The version of the data that the latest statement on this connection
  // read; nullopt when the engine cannot tell (nothing is then assumed to
  // stay unchanged between statements).
  virtual std::optional<DataVersion> LatestDataVersion() const { return std::nullopt; }

  // From BeginReads to the matching EndReads, the statements of this
  // connection read the data as one read does, so that each does not start
  // and end a read of its own. Pairs nest; the outermost counts. EndReads
  // ends that read (a record set still reading holds its own, as any
  // statement does) and never throws. Engines that cannot share a read do
  // nothing.
  virtual void BeginReads() {}
  virtual void EndReads() noexcept {}

  // The exact number of rows `sql` yields. This one runs the statement
  // through without keeping its rows.
  virtual int64_t Count(StringView sql);

  // The table `name` read by key in its own order, or nullptr when the engine
  // cannot give that order (a view, a table without such a key, an engine
  // without keys); the caller then reads "SELECT * FROM name" as a query.
  virtual std::unique_ptr<Table> OpenTable(StringView name);
};

// Opens a connection for reading: "sqlite:PATH", a bare path ending in ".db"
// or ".sqlite", or "odbc:CONNECTION-STRING" where that driver is built.
// Throws Error for an unknown form or a database that cannot be opened.
//
// A connection keeps the compiled statements of the texts it runs, one per
// shape (the text with the values it compares replaced by parameters), and
// runs them again with the values bound; answers are the same either way.
// "sqlite:PATH?statement_cache=off" (or "PATH.db?statement_cache=off") and
// the ODBC attribute "KavrinStatementCache=0" turn that off: every text is
// then compiled where it is run.
std::unique_ptr<Connection> Open(StringView connection_string);

// Opens (creating if needed) a connection that may create tables and load
// data: used to set up a suite database, never by the component.
std::unique_ptr<Connection> OpenForSetup(StringView connection_string);

}  // namespace kavrin::db
