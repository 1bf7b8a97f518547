#include "db/sqlite/SqliteConnection.h"

#include <sqlite3.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <unordered_map>

#include "db/SqlLexer.h"
#include "db/StatementShape.h"
#include "db/sqlite/Dialect.h"
#include "db/sqlite/KeyedTable.h"
#include "db/sqlite/StatementCache.h"
#include "db/sqlite/Statements.h"
#include "kavrin/Error.h"

namespace kavrin::db::sqlite {

namespace {

// How long a statement waits for a writer's lock before failing.
constexpr int kBusyTimeoutMs = 2000;
// How many virtual-machine steps the engine takes between two looks at the
// running statement's deadline.
constexpr int kProgressSteps = 1000;

// An open database handle, closed when the last owner lets go of it. A
// statement still open keeps the engine's connection alive until it is
// finalized, as sqlite3_close_v2 allows.
struct CloseDatabase {
  void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, CloseDatabase>;

// Nothing but statements that read: no attached files, no pragmas that set
// anything, no writes, no extension loading. A second line of defence behind
// the read-only open and query_only. Recursive common table expressions are
// refused too: the suite's queries have none, and one typed into a code
// field can generate rows without end. Beginning and ending a transaction
// is allowed only to the connection itself, while `own_transaction` (the
// flag the authorizer is given) is set around its BEGIN and COMMIT.
int Authorize(void* own_transaction, int action, const char*, const char*, const char*,
              const char*) {
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_FUNCTION:
      return SQLITE_OK;
    case SQLITE_TRANSACTION:
      return own_transaction && *static_cast<const bool*>(own_transaction) ? SQLITE_OK
                                                                           : SQLITE_DENY;
    default:
      return SQLITE_DENY;
  }
}
using SharedColumns = std::shared_ptr<const std::vector<ColumnInfo>>;

// The first row is read before the columns are described: a statement
// compiled before another connection changed a table it reads compiles
// itself again as it steps, and only then has the table's columns as they
// are now. The connection describes them once the cursor is made.
class SqliteCursor final : public Cursor {
 public:
  SqliteCursor(sqlite3* db, std::shared_ptr<Watchdog> watchdog, Statement stmt, bool utf8)
      : rows_(db, std::move(watchdog), std::move(stmt)), utf8_(utf8) {
    first_row_ = rows_.Next();
  }

  sqlite3_stmt* get() const { return rows_.get(); }
  void Describe(SharedColumns columns) { columns_ = std::move(columns); }

  const std::vector<ColumnInfo>& Columns() const override { return *columns_; }

  bool Next() override {
    if (!first_row_) return rows_.Next();
    const bool found = *first_row_;
    first_row_.reset();
    return found;
  }

  Variant Value(size_t index) const override {
    return ReadValue(rows_.get(), static_cast<int>(index), (*columns_)[index].type, utf8_);
  }

  bool Rewind() override {
    rows_.Rewind();
    first_row_.reset();
    return true;
  }

 private:
  SteppedStatement rows_;
  std::optional<bool> first_row_;  // read and not yet handed out: whether there was one
  bool utf8_;
  SharedColumns columns_;
};

class SqliteConnection final : public Connection {
 public:
  SqliteConnection(DatabaseHandle db, bool writable, bool utf8,
                   std::chrono::milliseconds time_limit, bool statement_cache)
      : handle_(std::move(db)),
        db_(handle_.get()),
        writable_(writable),
        utf8_(utf8),
        describer_(db_),
        watchdog_(std::make_shared<Watchdog>(time_limit)),
        cache_(statement_cache ? std::make_shared<StatementCache>(kCachedStatements) : nullptr) {
    if (!writable_) {
      sqlite3_progress_handler(db_, kProgressSteps, Watchdog::Expired, watchdog_.get());
      sqlite3_set_authorizer(db_, Authorize, &own_transaction_);
    }
  }

  // The transaction itself begins with the first statement run until
  // EndReads (see ShareReads): a call that reads nothing costs nothing.
  void BeginReads() override {
    if (!writable_) ++reads_;
  }

  // A COMMIT of a transaction that only read leaves statements still reading
  // as they are (a ROLLBACK would abort them).
  void EndReads() noexcept override {
    if (reads_ == 0 || --reads_ > 0 || !in_reads_) return;
    in_reads_ = false;
    if (!sqlite3_get_autocommit(db_)) Own(commit_, "COMMIT");
  }

  std::unique_ptr<Cursor> Query(StringView sql) override {
    ShareReads();
    watchdog_->Start();  // preparing counts too: a statement's time starts here
    const String text = QuoteCallKeywords(sql);
    if (cache_ && text.size() <= kLongestCachedText) {
      if (auto shape = ShapeOf(text, kSqliteProfile)) {
        if (Statement stmt = Compiled(*shape)) return CursorOver(std::move(stmt), &shape->text);
      }
    }
    sqlite3_stmt* raw = nullptr;
    const int rc =
        sqlite3_prepare16_v3(db_, text.data(), static_cast<int>(text.size() * 2), 0, &raw, nullptr);
    Statement stmt(raw);
    if (rc != SQLITE_OK) Fail(db_, rc);
    if (!stmt) Refuse("The command text holds no statement.");
    // The lexer reads the text as SQLite does, so it sees every statement
    // SQLite would run after the first (and the statements of a trigger body).
    if (SplitStatements(sql, kSqliteProfile).size() > 1)
      Refuse("The command text holds more than one statement.");
    if (!sqlite3_stmt_readonly(stmt.get())) Refuse("Only statements that read are allowed.");
    return CursorOver(std::move(stmt), nullptr);
  }

  void ExecuteScript(StringView sql) override {
    if (!writable_) Refuse("The connection is read-only.");
    char* message = nullptr;
    const int rc = sqlite3_exec(db_, ToUtf8(sql).c_str(), nullptr, nullptr, &message);
    if (rc != SQLITE_OK) {
      const String text = FromUtf8(message ? message : sqlite3_errstr(rc));
      sqlite3_free(message);
      throw Error(errors::kProviderSyntax, kSource, text);
    }
  }

  String Engine() const override { return u"sqlite"; }
  String Dbms() const override { return u"SQLite"; }

  bool RepeatsRowOrder() const override { return true; }

  // The pager's counter moves with every commit, this connection's or
  // another's, that a read on this connection has seen.
  std::optional<DataVersion> LatestDataVersion() const override {
    unsigned int counter = 0;
    if (sqlite3_file_control(db_, "main", SQLITE_FCNTL_DATA_VERSION, &counter) != SQLITE_OK) {
      return std::nullopt;
    }
    return DataVersion{counter, static_cast<uint64_t>(sqlite3_total_changes64(db_))};
  }

  std::unique_ptr<Table> OpenTable(StringView name) override {
    ShareReads();
    const std::string key = ToUtf8(ToLowerAscii(name));
    auto found = shapes_.find(key);
    if (found == shapes_.end() || !found->second ||
        found->second->verified_at != LatestDataVersion()) {
      if (shapes_.size() >= kMaxShapes) shapes_.clear();
      found = shapes_
                  .insert_or_assign(key, ReadTableShape(db_, describer_, *watchdog_, name, utf8_,
                                                        LatestDataVersion()))
                  .first;
    }
    if (!found->second) return nullptr;
    return OpenKeyedTable(db_, watchdog_, found->second, cache_);
  }

 private:
  // One deferred transaction, begun before the first statement between
  // BeginReads and EndReads: that statement starts the read that the others
  // share.
  void ShareReads() {
    if (reads_ > 0 && !in_reads_ && sqlite3_get_autocommit(db_)) in_reads_ = Own(begin_, "BEGIN");
  }

  // Runs one of the connection's own transaction statements.
  // Compiled once and kept: the authorizer lets them compile (and compile
  // again after a schema change, which happens while they run) only here.
  bool Own(Statement& kept, const char* statement) noexcept {
    own_transaction_ = true;
    if (!kept) {
      sqlite3_stmt* raw = nullptr;
      sqlite3_prepare_v3(db_, statement, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
      kept.reset(raw);
    }
    const int rc = kept ? sqlite3_step(kept.get()) : SQLITE_ERROR;
    if (kept) sqlite3_reset(kept.get());
    own_transaction_ = false;
    return rc == SQLITE_DONE;
  }

  static constexpr size_t kMaxShapes = 256;
  // Compiled statements kept per connection, and the longest text kept.
  static constexpr size_t kCachedStatements = 128;
  static constexpr size_t kLongestCachedText = 8192;

  // A cursor over `stmt`, compiled from `shape` when that is given.
  std::unique_ptr<SqliteCursor> CursorOver(Statement stmt, const String* shape) {
    auto cursor = std::make_unique<SqliteCursor>(db_, watchdog_, std::move(stmt), utf8_);
    cursor->Describe(ColumnsOf(cursor->get(), shape));
    return cursor;
  }

  // The columns of a statement, described once per shape for as long as the
  // statement kept for it is the one described and has not compiled itself
  // again since.
  SharedColumns ColumnsOf(sqlite3_stmt* stmt, const String* shape) {
    const int compiled_again = sqlite3_stmt_status(stmt, SQLITE_STMTSTATUS_REPREPARE, 0);
    if (shape) {
      const auto found = described_.find(*shape);
      if (found != described_.end() && found->second.stmt == stmt &&
          found->second.compiled_again == compiled_again) {
        return found->second.columns;
      }
    }
    std::vector<ColumnInfo> columns;
    const int count = sqlite3_column_count(stmt);
    columns.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
      columns.push_back(describer_.Describe(stmt, i));
    auto shared = std::make_shared<const std::vector<ColumnInfo>>(std::move(columns));
    if (shape) {
      if (described_.size() >= 2 * kCachedStatements) described_.clear();
      described_.insert_or_assign(*shape, Described{stmt, compiled_again, shared});
    }
    return shared;
  }

  // The compiled statement of `shape` with its values bound, or null when
  // the shape does not compile to one statement that reads: the text then
  // runs as it is and fails as it would have.
  Statement Compiled(const StatementShape& shape) {
    Statement stmt = cache_->Take(shape.text);
    if (!stmt) {
      sqlite3_stmt* raw = nullptr;
      const void* tail = nullptr;
      const int rc =
          sqlite3_prepare16_v3(db_, shape.text.data(), static_cast<int>(shape.text.size() * 2),
                               SQLITE_PREPARE_PERSISTENT, &raw, &tail);
      stmt = cache_->Adopt(shape.text, raw);
      described_.erase(shape.text);
      const bool whole = tail == shape.text.data() + shape.text.size();
      if (rc != SQLITE_OK || !raw || !whole || !sqlite3_stmt_readonly(raw) ||
          sqlite3_bind_parameter_count(raw) != static_cast<int>(shape.values.size())) {
        stmt.get_deleter().home.reset();
        return nullptr;
      }
    }
    for (size_t i = 0; i < shape.values.size(); ++i) {
      const int index = static_cast<int>(i + 1);
      int rc = SQLITE_OK;
      if (const auto* text = std::get_if<String>(&shape.values[i])) {
        // Bound as UTF-8: SQLite drops a leading U+FEFF from any text bound
        // as UTF-16, which a literal keeps. Texts with units that do not
        // convert alike never get here (see ShapeOf).
        const std::string utf8 = ToUtf8(*text);
        rc = sqlite3_bind_text64(stmt.get(), index, utf8.data(), utf8.size(), SQLITE_TRANSIENT,
                                 SQLITE_UTF8);
      } else {
        rc = sqlite3_bind_int64(stmt.get(), index, std::get<int64_t>(shape.values[i]));
      }
      if (rc != SQLITE_OK) return nullptr;
    }
    return stmt;
  }

  static String ToLowerAscii(StringView text) {
    String lower(text);
    for (char16_t& c : lower) {
      if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
    }
    return lower;
  }

  DatabaseHandle handle_;
  sqlite3* db_;  // handle_'s, for the engine's calls
  bool writable_;
  bool utf8_;
  Describer describer_;
  std::shared_ptr<Watchdog> watchdog_;
  std::unordered_map<std::string, std::shared_ptr<const TableShape>> shapes_;
  std::shared_ptr<StatementCache> cache_;  // null when statements are compiled each time
  // The columns of the statements kept, per shape.
  struct Described {
    const sqlite3_stmt* stmt;
    int compiled_again;
    SharedColumns columns;
  };
  std::unordered_map<String, Described> described_;
  Statement begin_, commit_;      // the shared read's own BEGIN and COMMIT
  bool own_transaction_ = false;  // set while the connection begins or ends its own
  int reads_ = 0;                 // BeginReads not yet ended
  bool in_reads_ = false;         // the outermost BeginReads began a transaction
};

// Whether the database keeps its texts in UTF-8.
bool StoresUtf8(sqlite3* db) {
  sqlite3_stmt* stmt = nullptr;
  bool utf8 = false;
  if (sqlite3_prepare_v2(db, "PRAGMA encoding", -1, &stmt, nullptr) == SQLITE_OK &&
      sqlite3_step(stmt) == SQLITE_ROW) {
    const auto* encoding = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    utf8 = encoding && std::strcmp(encoding, "UTF-8") == 0;
  }
  sqlite3_finalize(stmt);
  return utf8;
}

// Configures a connection just opened; answers whether its database keeps
// texts in UTF-8.
bool Configure(sqlite3* db, bool writable) {
  sqlite3_extended_result_codes(db, 1);
  sqlite3_busy_timeout(db, kBusyTimeoutMs);
  sqlite3_db_config(db, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
  sqlite3_db_config(db, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(db, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  int rc = RegisterDialect(db);
  if (rc != SQLITE_OK) Fail(db, rc);
  if (!writable) {
    sqlite3_limit(db, SQLITE_LIMIT_ATTACHED, 0);
    rc = sqlite3_exec(db, "PRAGMA query_only=1", nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK) Fail(db, rc);
  }
  // Reading the schema proves the file is a database before the first call.
  rc = sqlite3_exec(db, "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) Fail(db, rc);
  const bool utf8 = StoresUtf8(db);
  if (!writable) sqlite3_set_authorizer(db, Authorize, nullptr);
  return utf8;
}

}  // namespace
std::unique_ptr<Connection> OpenFile(const std::string& path, bool writable,
                                     std::chrono::milliseconds time_limit, bool statement_cache) {
  sqlite3* opened = nullptr;
  const int flags = writable ? (SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) : SQLITE_OPEN_READONLY;
  const int rc = sqlite3_open_v2(path.c_str(), &opened, flags | SQLITE_OPEN_FULLMUTEX, nullptr);
  DatabaseHandle db(opened);  // even a failed open gives a handle to close
  if (rc != SQLITE_OK) {
    const String message = FromUtf8(db ? sqlite3_errmsg(db.get()) : sqlite3_errstr(rc));
    throw Error(errors::kProviderFailure, kSource, message + u": " + FromUtf8(path));
  }
  const bool utf8 = Configure(db.get(), writable);
  return std::make_unique<SqliteConnection>(std::move(db), writable, utf8, time_limit,
                                            statement_cache);
}

}  // namespace kavrin::db::sqlite
