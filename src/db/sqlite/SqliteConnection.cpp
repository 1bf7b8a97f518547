#include "db/sqlite/SqliteConnection.h"

#include <sqlite3.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <unordered_map>

#include "db/DeclaredType.h"
#include "db/SqlLexer.h"
#include "db/StatementShape.h"
#include "db/sqlite/Dialect.h"
#include "db/sqlite/StatementCache.h"
#include "kavrin/Error.h"

namespace kavrin::db::sqlite {

namespace {

const String kSource(sources::kSqlite);

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

[[noreturn]] void Fail(sqlite3* db, int rc) {
  const int primary = rc & 0xFF;
  const char* message = db ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
  int32_t number = errors::kProviderSyntax;
  if (primary == SQLITE_INTERRUPT) {
    throw Error(errors::kProviderTimeout, kSource, u"Query timeout expired");
  }
  if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED) {
    number = errors::kProviderTimeout;
  } else if (primary == SQLITE_CANTOPEN || primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT ||
             primary == SQLITE_IOERR || primary == SQLITE_NOMEM || primary == SQLITE_READONLY ||
             primary == SQLITE_PERM) {
    number = errors::kProviderFailure;
  } else if (std::strncmp(message, "no such table", 13) == 0) {
    number = errors::kProviderNoTable;
  }
  throw Error(number, kSource, FromUtf8(message));
}

[[noreturn]] void Refuse(const char* why) {
  throw Error(errors::kProviderSyntax, kSource, FromUtf8(why));
}

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

// A column value as stored, typed as the column's declared type says. A text
// of a UTF-8 database is turned into UTF-16 here rather than by SQLite.
Variant ReadValue(sqlite3_stmt* stmt, int i, VarType type, bool utf8) {
  Variant stored;
  switch (sqlite3_column_type(stmt, i)) {
    case SQLITE_NULL:
      return Variant::Null();
    case SQLITE_INTEGER: {
      const sqlite3_int64 v = sqlite3_column_int64(stmt, i);
      stored = (v >= INT32_MIN && v <= INT32_MAX) ? Variant(static_cast<int32_t>(v))
                                                  : Variant(static_cast<double>(v));
      break;
    }
    case SQLITE_FLOAT:
      stored = sqlite3_column_double(stmt, i);
      break;
    default:  // a text, or a blob read as one
      if (utf8) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, i));
        const auto bytes = static_cast<size_t>(sqlite3_column_bytes(stmt, i));
        stored = StoredTextAsUtf16(std::string_view(text ? text : "", bytes));
      } else {
        const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(stmt, i));
        const int bytes = sqlite3_column_bytes16(stmt, i);
        stored = String(text ? text : u"", static_cast<size_t>(bytes / 2));
      }
  }
  return CoerceStored(std::move(stored), type);
}

// Describes the columns of statements: the name each gets, the value type
// its declared type stands for and its source column's collation. A column
// described once is known by its name, declared type and source, per data
// version: only a commit can change a table's definition.
class Describer {
 public:
  explicit Describer(sqlite3* db) : db_(db) {}

  ColumnInfo Describe(sqlite3_stmt* stmt, int i) {
    const char* name = sqlite3_column_name(stmt, i);
    const char* declared = sqlite3_column_decltype(stmt, i);
    const char* table = sqlite3_column_table_name(stmt, i);
    const char* origin = sqlite3_column_origin_name(stmt, i);
    const char* schema = sqlite3_column_database_name(stmt, i);
    key_.clear();
    for (const char* part : {name, declared, table, origin, schema}) {
      key_ += part ? part : "";
      key_.push_back('\0');
      key_.push_back(part ? '+' : '-');
    }
    unsigned int version = 0;
    sqlite3_file_control(db_, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    if (version != version_ || known_.size() >= kMostKnown) {
      known_.clear();
      version_ = version;
    }
    if (const auto found = known_.find(key_); found != known_.end()) return found->second;

    ColumnInfo info;
    info.name = static_cast<const char16_t*>(sqlite3_column_name16(stmt, i));
    info.type = declared ? TypeFromDeclared(FromUtf8(declared)) : VarType::Variant;
    const char* collation = nullptr;
    if (table && origin &&
        sqlite3_table_column_metadata(db_, schema, table, origin, nullptr, &collation, nullptr,
                                      nullptr, nullptr) == SQLITE_OK &&
        collation) {
      info.collation = FromUtf8(collation);
    }
    known_.emplace(key_, info);
    return info;
  }

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
bool Step(sqlite3* db, sqlite3_stmt* stmt, Watchdog& watchdog) {
  if (!sqlite3_stmt_busy(stmt)) watchdog.Start();
  const int rc = sqlite3_step(stmt);
  if (rc == SQLITE_ROW) return true;
  sqlite3_reset(stmt);
  if (rc == SQLITE_DONE) return false;
  Fail(db, rc);
}

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

class SqliteCursor final : public Cursor {
 public:
  SqliteCursor(sqlite3* db, std::shared_ptr<Watchdog> watchdog, Statement stmt,
               Describer& describer, bool utf8)
      : rows_(db, std::move(watchdog), std::move(stmt)), utf8_(utf8) {
    const int count = sqlite3_column_count(rows_.get());
    columns_.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
      columns_.push_back(describer.Describe(rows_.get(), i));
  }

  const std::vector<ColumnInfo>& Columns() const override { return columns_; }

  bool Next() override { return rows_.Next(); }

  Variant Value(size_t index) const override {
    return ReadValue(rows_.get(), static_cast<int>(index), columns_[index].type, utf8_);
  }

  bool Rewind() override {
    rows_.Rewind();
    return true;
  }

 private:
  SteppedStatement rows_;
  bool utf8_;
  std::vector<ColumnInfo> columns_;
};

// What a table read by key needs: its name as the caller wrote it, the name
// under which its rowid is selected, and the columns of SELECT *.
struct TableShape {
  bool utf8 = true;  // the database keeps its texts in UTF-8
  std::string name;
  std::string key;
  std::vector<ColumnInfo> columns;
  std::optional<DataVersion> verified_at;
};

// The rows of a keyed statement: the key first, then the table's columns.
class SqliteTableCursor final : public TableCursor {
 public:
  SqliteTableCursor(sqlite3* db, std::shared_ptr<Watchdog> watchdog, Statement stmt,
                    std::shared_ptr<const TableShape> shape)
      : rows_(db, std::move(watchdog), std::move(stmt)), shape_(std::move(shape)) {}

  const std::vector<ColumnInfo>& Columns() const override { return shape_->columns; }
  bool Next() override { return rows_.Next(); }
  Variant Value(size_t index) const override {
    return ReadValue(rows_.get(), static_cast<int>(index) + 1, shape_->columns[index].type,
                     shape_->utf8);
  }
  int64_t Key() const override { return sqlite3_column_int64(rows_.get(), 0); }

 private:
  SteppedStatement rows_;
  std::shared_ptr<const TableShape> shape_;
};

std::string QuotedIdentifier(StringView name) {
  std::string quoted = "\"";
  for (char c : ToUtf8(name)) {
    quoted.push_back(c);
    if (c == '"') quoted.push_back('"');
  }
  quoted.push_back('"');
  return quoted;
}

class SqliteTable final : public Table {
 public:
  SqliteTable(sqlite3* db, std::shared_ptr<Watchdog> watchdog,
              std::shared_ptr<const TableShape> shape, std::shared_ptr<StatementCache> cache)
      : db_(db),
        watchdog_(std::move(watchdog)),
        shape_(std::move(shape)),
        cache_(std::move(cache)) {}

  const std::vector<ColumnInfo>& Columns() const override { return shape_->columns; }

  std::unique_ptr<TableCursor> Rows(std::optional<int64_t> after_key) override {
    auto stmt = Prepare(after_key ? Select() + " WHERE " + shape_->key + " > ?1" + InOrder()
                                  : Select() + InOrder());
    if (after_key) sqlite3_bind_int64(stmt.get(), 1, *after_key);
    return Wrap(std::move(stmt));
  }

  std::unique_ptr<TableCursor> Last() override {
    return Wrap(Prepare(Select() + " ORDER BY " + shape_->key + " DESC LIMIT 1"));
  }

  std::unique_ptr<TableCursor> Matching(const std::vector<TextCondition>& conditions) override {
    std::string sql = Select();
    for (size_t i = 0; i < conditions.size(); ++i) {
      const TextCondition& c = conditions[i];
      sql += i == 0 ? " WHERE " : " AND ";
      sql += QuotedIdentifier(shape_->columns.at(c.column).name);
      sql += c.equal ? " = ?" : " <> ?";
      sql += std::to_string(i + 1) + " COLLATE " + QuotedIdentifier(c.collation);
    }
    auto stmt = Prepare(sql + InOrder());
    for (size_t i = 0; i < conditions.size(); ++i) {
      const String& text = conditions[i].text;
      sqlite3_bind_text16(stmt.get(), static_cast<int>(i + 1), text.data(),
                          static_cast<int>(text.size() * 2), SQLITE_TRANSIENT);
    }
    return Wrap(std::move(stmt));
  }

  int64_t Count() override {
    auto stmt = Prepare("SELECT count(*) FROM " + shape_->name);
    if (!Step(db_, stmt.get(), *watchdog_)) return 0;
    return sqlite3_column_int64(stmt.get(), 0);
  }

 private:
  std::string Select() const { return "SELECT " + shape_->key + ", * FROM " + shape_->name; }
  std::string InOrder() const { return " ORDER BY " + shape_->key; }

  // The statement of `sql`, kept compiled when the connection keeps them.
  Statement Prepare(const std::string& sql) const {
    String key;
    if (cache_) {
      key = FromUtf8(sql);
      if (Statement kept = cache_->Take(key)) return kept;
    }
    sqlite3_stmt* raw = nullptr;
    const int rc = sqlite3_prepare_v3(db_, sql.c_str(), static_cast<int>(sql.size()),
                                      cache_ ? SQLITE_PREPARE_PERSISTENT : 0, &raw, nullptr);
    Statement stmt = cache_ ? cache_->Adopt(key, raw) : Statement(raw);
    if (rc != SQLITE_OK) {
      stmt.get_deleter().home.reset();
      Fail(db_, rc);
    }
    return stmt;
  }

  std::unique_ptr<TableCursor> Wrap(Statement stmt) const {
    return std::make_unique<SqliteTableCursor>(db_, watchdog_, std::move(stmt), shape_);
  }

  sqlite3* db_;
  std::shared_ptr<Watchdog> watchdog_;
  std::shared_ptr<const TableShape> shape_;
  std::shared_ptr<StatementCache> cache_;  // null when statements are compiled each time
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
        if (Statement stmt = Compiled(*shape)) {
          return std::make_unique<SqliteCursor>(db_, watchdog_, std::move(stmt), describer_, utf8_);
        }
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
    return std::make_unique<SqliteCursor>(db_, watchdog_, std::move(stmt), describer_, utf8_);
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
      found = shapes_.insert_or_assign(key, Shape(name)).first;
    }
    if (!found->second) return nullptr;
    return std::make_unique<SqliteTable>(db_, watchdog_, found->second, cache_);
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

  Statement TryPrepare(const std::string& sql) const {
    watchdog_->Start();
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v3(db_, sql.c_str(), static_cast<int>(sql.size()), 0, &raw, nullptr) !=
        SQLITE_OK) {
      sqlite3_finalize(raw);
      return nullptr;
    }
    return Statement(raw);
  }

  // How the table `name` is read by key, or nullptr when SELECT * FROM name
  // does not give its rows in rowid order: a view, a table without rowids, a
  // virtual table, a name qualified by a schema, or a plan that reads the
  // rows through an index.
  std::shared_ptr<const TableShape> Shape(StringView name) {
    if (name.find(u'.') != StringView::npos) return nullptr;
    auto shape = std::make_shared<TableShape>();
    shape->utf8 = utf8_;
    shape->name = ToUtf8(name);
    auto all = TryPrepare("SELECT * FROM " + shape->name);
    if (!all) return nullptr;
    for (int i = 0; i < sqlite3_column_count(all.get()); ++i)
      shape->columns.push_back(describer_.Describe(all.get(), i));

    auto plan = TryPrepare("EXPLAIN QUERY PLAN SELECT * FROM " + shape->name);
    if (!plan) return nullptr;
    int steps = 0;
    bool plain_scan = false;
    int rc = SQLITE_ROW;
    while ((rc = sqlite3_step(plan.get())) == SQLITE_ROW) {
      const auto* detail = reinterpret_cast<const char*>(sqlite3_column_text(plan.get(), 3));
      const String text = FromUtf8(detail ? detail : "");
      plain_scan = EqualsNoCase(text, u"SCAN " + String(name)) ||
                   EqualsNoCase(text, u"SCAN TABLE " + String(name));
      ++steps;
    }
    if (rc != SQLITE_DONE || steps != 1 || !plain_scan) return nullptr;

    for (const char* candidate : {"rowid", "_rowid_", "oid"}) {
      bool taken = false;
      for (const auto& column : shape->columns)
        taken = taken || EqualsNoCase(column.name, FromUtf8(candidate));
      if (!taken) {
        shape->key = candidate;
        break;
      }
    }
    if (shape->key.empty() ||
        !TryPrepare("SELECT " + shape->key + " FROM " + shape->name + " ORDER BY " + shape->key)) {
      return nullptr;
    }
    shape->verified_at = LatestDataVersion();
    return shape;
  }

  DatabaseHandle handle_;
  sqlite3* db_;  // handle_'s, for the engine's calls
  bool writable_;
  bool utf8_;
  Describer describer_;
  std::shared_ptr<Watchdog> watchdog_;
  std::unordered_map<std::string, std::shared_ptr<const TableShape>> shapes_;
  std::shared_ptr<StatementCache> cache_;  // null when statements are compiled each time
  Statement begin_, commit_;               // the shared read's own BEGIN and COMMIT
  bool own_transaction_ = false;           // set while the connection begins or ends its own
  int reads_ = 0;                          // BeginReads not yet ended
  bool in_reads_ = false;                  // the outermost BeginReads began a transaction
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
