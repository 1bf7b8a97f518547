// What the SQLite driver's connection, cursors and keyed tables share: the
// engine's errors as the kit's, values read by declared type, column
// descriptions, the time limit of a running statement and stepping.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <memory>
#include <string>
#include <unordered_map>

#include "db/Driver.h"
#include "db/sqlite/StatementCache.h"
#include "kavrin/Error.h"

namespace kavrin::db::sqlite {

inline const String kSource(sources::kSqlite);

// The engine's failure `rc` on `db` thrown as the kit's error: a lock wait
// or an interruption as a timeout, a file that cannot be read as a failure,
// a missing table under its own number, the rest as a rejected statement.
[[noreturn]] void Fail(sqlite3* db, int rc);

// A text refused before it runs, as the engine refuses a statement.
[[noreturn]] void Refuse(const char* why);

// A column value as stored, typed as the column's declared type says. A text
// of a UTF-8 database is turned into UTF-16 here rather than by SQLite.
Variant ReadValue(sqlite3_stmt* stmt, int i, VarType type, bool utf8);

// Describes the columns of statements: the name each gets, the value type
// its declared type stands for and its source column's collation. A column
// described once is known by its name, declared type and source, per data
// version: only a commit can change a table's definition.
class Describer {
 public:
  explicit Describer(sqlite3* db) : db_(db) {}

  ColumnInfo Describe(sqlite3_stmt* stmt, int i);

 private:
  static constexpr size_t kMostKnown = 4096;
  sqlite3* db_;
  unsigned int version_ = 0;
  std::string key_;
  std::unordered_map<std::string, ColumnInfo> known_;
};

// The time a statement of a read-only connection has, from when it starts
// running to its last row, before the engine interrupts it and it fails as a
// timeout, as ADO's command timeout would. Cursors share it with their
// connection, so it outlives every statement that the engine may call it for.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::milliseconds limit) : limit_(limit) {}
  void Start() { deadline_ = std::chrono::steady_clock::now() + limit_; }
  static int Expired(void* self) {
    return std::chrono::steady_clock::now() > static_cast<Watchdog*>(self)->deadline_;
  }

 private:
  std::chrono::milliseconds limit_;
  std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::time_point::max();
};

// Steps `stmt` once: true on a row, false at the end. Reaching the end
// resets the statement at once, which ends its read. A statement that starts
// running starts its time.
bool Step(sqlite3* db, sqlite3_stmt* stmt, Watchdog& watchdog);

// A prepared statement read row by row, with the time limit of its
// connection. Once it has answered its last row it answers no more until
// rewound.
class SteppedStatement {
 public:
  SteppedStatement(sqlite3* db, std::shared_ptr<Watchdog> watchdog, Statement stmt)
      : db_(db), watchdog_(std::move(watchdog)), stmt_(std::move(stmt)) {}

  sqlite3_stmt* get() const { return stmt_.get(); }

  bool Next() {
    if (done_) return false;
    if (Step(db_, stmt_.get(), *watchdog_)) return true;
    done_ = true;
    return false;
  }

  void Rewind() {
    sqlite3_reset(stmt_.get());
    done_ = false;
  }

 private:
  sqlite3* db_;
  std::shared_ptr<Watchdog> watchdog_;  // declared first: it outlives the statement
  Statement stmt_;
  bool done_ = false;
};

}  // namespace kavrin::db::sqlite
