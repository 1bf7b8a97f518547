#include "db/sqlite/SqliteConnection.h"

#include <sqlite3.h>

#include <chrono>
#include <cstring>

#include "db/DeclaredType.h"
#include "db/sqlite/Dialect.h"
#include "kavrin/Error.h"

namespace kavrin::db::sqlite {

namespace {

const String kSource = u"Kavrin.SQLite";

// How long a statement waits for a writer's lock before failing.
constexpr int kBusyTimeoutMs = 2000;
// How many virtual-machine steps the engine takes between two looks at the
// statement's deadline.
constexpr int kProgressSteps = 1000;

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
// field can generate rows without end.
int Authorize(void*, int action, const char*, const char*, const char*, const char*) {
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_FUNCTION:
      return SQLITE_OK;
    default:
      return SQLITE_DENY;
  }
}

struct StatementDeleter {
  void operator()(sqlite3_stmt* stmt) const { sqlite3_finalize(stmt); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

class SqliteCursor final : public Cursor {
 public:
  SqliteCursor(sqlite3* db, Statement stmt) : db_(db), stmt_(std::move(stmt)) {
    const int count = sqlite3_column_count(stmt_.get());
    columns_.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
      columns_.push_back(Describe(i));
  }

  const std::vector<ColumnInfo>& Columns() const override { return columns_; }

  bool Next() override {
    if (!stmt_) return false;
    const int rc = sqlite3_step(stmt_.get());
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) {
      stmt_.reset();
      return false;
    }
    Fail(db_, rc);
  }

  Variant Value(size_t index) const override {
    sqlite3_stmt* stmt = stmt_.get();
    const int i = static_cast<int>(index);
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
      default: {
        const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(stmt, i));
        const int bytes = sqlite3_column_bytes16(stmt, i);
        stored = String(text ? text : u"", static_cast<size_t>(bytes / 2));
      }
    }
    return CoerceStored(std::move(stored), columns_[index].type);
  }

 private:
  ColumnInfo Describe(int i) const {
    sqlite3_stmt* stmt = stmt_.get();
    ColumnInfo info;
    info.name = static_cast<const char16_t*>(sqlite3_column_name16(stmt, i));
    const char* declared = sqlite3_column_decltype(stmt, i);
    info.type = declared ? TypeFromDeclared(FromUtf8(declared)) : VarType::Variant;
    const char* table = sqlite3_column_table_name(stmt, i);
    const char* origin = sqlite3_column_origin_name(stmt, i);
    const char* schema = sqlite3_column_database_name(stmt, i);
    const char* collation = nullptr;
    if (table && origin &&
        sqlite3_table_column_metadata(db_, schema, table, origin, nullptr, &collation, nullptr,
                                      nullptr, nullptr) == SQLITE_OK &&
        collation) {
      info.collation = FromUtf8(collation);
    }
    return info;
  }

  sqlite3* db_;
  Statement stmt_;
  std::vector<ColumnInfo> columns_;
};

class SqliteConnection final : public Connection {
 public:
  SqliteConnection(sqlite3* db, bool writable, std::chrono::milliseconds time_limit)
      : db_(db), writable_(writable), time_limit_(time_limit) {
    if (!writable_) sqlite3_progress_handler(db_, kProgressSteps, PastDeadline, this);
  }
  ~SqliteConnection() override { sqlite3_close_v2(db_); }

  std::unique_ptr<Cursor> Query(StringView sql) override {
    // The statement has its time from now on: it is interrupted when reading
    // its rows runs past it.
    deadline_ = std::chrono::steady_clock::now() + time_limit_;
    const String text = QuoteCallKeywords(sql);
    sqlite3_stmt* raw = nullptr;
    const void* tail = nullptr;
    const int rc =
        sqlite3_prepare16_v3(db_, text.data(), static_cast<int>(text.size() * 2), 0, &raw, &tail);
    Statement stmt(raw);
    if (rc != SQLITE_OK) Fail(db_, rc);
    if (!stmt) Refuse("The command text holds no statement.");
    if (HoldsAnotherStatement(tail, text))
      Refuse("The command text holds more than one statement.");
    if (!sqlite3_stmt_readonly(stmt.get())) Refuse("Only statements that read are allowed.");
    return std::make_unique<SqliteCursor>(db_, std::move(stmt));
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

 private:
  static int PastDeadline(void* self) {
    return std::chrono::steady_clock::now() > static_cast<SqliteConnection*>(self)->deadline_;
  }

  // Whether the rest of the text after the first statement holds another
  // one (blanks, comments and semicolons alone do not count).
  bool HoldsAnotherStatement(const void* tail, const String& text) const {
    const auto* rest = static_cast<const char16_t*>(tail);
    if (!rest) return false;
    const auto offset = static_cast<size_t>(rest - text.data());
    if (offset >= text.size()) return false;
    const String remainder = text.substr(offset);
    sqlite3_stmt* next = nullptr;
    const int rc = sqlite3_prepare16_v3(db_, remainder.data(),
                                        static_cast<int>(remainder.size() * 2), 0, &next, nullptr);
    sqlite3_finalize(next);
    return rc != SQLITE_OK || next != nullptr;
  }

  sqlite3* db_;
  bool writable_;
  std::chrono::milliseconds time_limit_;
  std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::time_point::max();
};

void Configure(sqlite3* db, bool writable) {
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
  if (!writable) sqlite3_set_authorizer(db, Authorize, nullptr);
}

}  // namespace

std::unique_ptr<Connection> OpenFile(const std::string& path, bool writable,
                                     std::chrono::milliseconds time_limit) {
  sqlite3* db = nullptr;
  const int flags = writable ? (SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) : SQLITE_OPEN_READONLY;
  const int rc = sqlite3_open_v2(path.c_str(), &db, flags | SQLITE_OPEN_FULLMUTEX, nullptr);
  if (rc != SQLITE_OK) {
    const String message = FromUtf8(db ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
    sqlite3_close_v2(db);
    throw Error(errors::kProviderFailure, kSource, message + u": " + FromUtf8(path));
  }
  try {
    Configure(db, writable);
  } catch (...) {
    sqlite3_close_v2(db);
    throw;
  }
  return std::make_unique<SqliteConnection>(db, writable, time_limit);
}

}  // namespace kavrin::db::sqlite
