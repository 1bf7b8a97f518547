// The engine seam: what the platform layer needs of a database engine, and
// nothing more. A connection runs one read-only statement at a time and hands
// back a cursor of typed rows; drivers live in sqlite/ and odbc/.
//
// Errors are kavrin::Error with provider numbers (errors::kProvider*) and the
// engine's own message. Connections are used by one thread at a time.
#pragma once

#include <functional>
#include <memory>
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
};

// Opens a connection for reading: "sqlite:PATH", a bare path ending in ".db"
// or ".sqlite", or "odbc:CONNECTION-STRING" where that driver is built.
// Throws Error for an unknown form or a database that cannot be opened.
std::unique_ptr<Connection> Open(StringView connection_string);

// Opens (creating if needed) a connection that may create tables and load
// data: used to set up a suite database, never by the component.
std::unique_ptr<Connection> OpenForSetup(StringView connection_string);

}  // namespace kavrin::db
