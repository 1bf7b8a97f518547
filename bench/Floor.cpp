#include "Floor.h"

#ifdef KAVRIN_WITH_ODBC
#include <sql.h>
#include <sqlext.h>
#endif

#include <stdexcept>

#include "db/sqlite/Dialect.h"
#include "kavrin/String.h"

namespace kavrin::bench {

// ---- SQLite ----

SqliteFloor::SqliteFloor(const std::string& path) {
  if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK ||
      db::sqlite::RegisterDialect(db_) != SQLITE_OK) {
    throw std::runtime_error("cannot open " + path);
  }
}

SqliteFloor::~SqliteFloor() {
  sqlite3_close(db_);
}

sqlite3_stmt* SqliteFloor::Prepare(const std::string& sql) {
  ++statements;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, sql.c_str(), static_cast<int>(sql.size()), &stmt, nullptr) !=
      SQLITE_OK) {
    throw std::runtime_error(sql + ": " + sqlite3_errmsg(db_));
  }
  return stmt;
}

void SqliteFloor::ReadRow(sqlite3_stmt* stmt) {
  for (int i = 0, n = sqlite3_column_count(stmt); i < n; ++i) {
    switch (sqlite3_column_type(stmt, i)) {
      case SQLITE_INTEGER:
        sqlite3_column_int64(stmt, i);
        break;
      case SQLITE_FLOAT:
        sqlite3_column_double(stmt, i);
        break;
      case SQLITE_NULL:
        break;
      default:
        sqlite3_column_text(stmt, i);
    }
  }
}

bool SqliteFloor::Find(const std::string& sql) {
  sqlite3_stmt* stmt = Prepare(sql);
  const bool row = sqlite3_step(stmt) == SQLITE_ROW;
  if (row) ReadRow(stmt);
  sqlite3_finalize(stmt);
  return row;
}

bool SqliteFloor::First(const std::string& sql) {
  if (sent) sent->push_back(sql);
  return Find(sql);
}

std::vector<std::string> SqliteFloor::All(const std::string& sql) {
  if (sent) sent->push_back(sql);
  sqlite3_stmt* stmt = Prepare(sql);
  std::vector<std::string> firsts;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    ReadRow(stmt);
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    firsts.emplace_back(text ? text : "");
  }
  sqlite3_finalize(stmt);
  return firsts;
}

// ---- ODBC ----

#ifdef KAVRIN_WITH_ODBC
namespace {

// A hand-written ODBC client: one statement handle per statement, every
// value of a row read as text.
class OdbcFloor final : public Floor {
 public:
  explicit OdbcFloor(const std::string& connection_string) {
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env_);
    SQLSetEnvAttr(env_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, env_, &dbc_);
    String text = FromUtf8(connection_string);
    if (!SQL_SUCCEEDED(SQLDriverConnectW(dbc_, nullptr, Wide(text), SQL_NTS, nullptr, 0, nullptr,
                                         SQL_DRIVER_NOPROMPT))) {
      throw std::runtime_error("cannot connect to " + connection_string);
    }
    connected_ = true;
  }
  ~OdbcFloor() override {
    if (connected_) SQLDisconnect(dbc_);
    SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
    SQLFreeHandle(SQL_HANDLE_ENV, env_);
  }
  OdbcFloor(const OdbcFloor&) = delete;
  OdbcFloor& operator=(const OdbcFloor&) = delete;

  bool First(const std::string& sql) override {
    // A whole table asked only whether it has a row, and which is its first.
    const bool whole =
        sql.rfind("SELECT * FROM ", 0) == 0 && sql.find(' ', 14) == std::string::npos;
    return Rows(whole ? sql + " LIMIT 1" : sql, 1) > 0;
  }
  bool Find(const std::string& sql) override { return Rows(sql + " LIMIT 1", 1) > 0; }
  std::vector<std::string> All(const std::string& sql) override {
    std::vector<std::string> firsts;
    Rows(sql, SIZE_MAX, &firsts);
    return firsts;
  }

 private:
  static SQLWCHAR* Wide(String& text) { return reinterpret_cast<SQLWCHAR*>(text.data()); }

  size_t Rows(const std::string& sql, size_t most, std::vector<std::string>* firsts = nullptr) {
    ++statements;
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    SQLAllocHandle(SQL_HANDLE_STMT, dbc_, &stmt);
    String text = FromUtf8(sql);
    if (!SQL_SUCCEEDED(SQLExecDirectW(stmt, Wide(text), static_cast<SQLINTEGER>(text.size())))) {
      SQLFreeHandle(SQL_HANDLE_STMT, stmt);
      throw std::runtime_error("the server refused: " + sql);
    }
    SQLSMALLINT columns = 0;
    SQLNumResultCols(stmt, &columns);
    size_t rows = 0;
    char16_t value[1024];
    while (rows < most && SQL_SUCCEEDED(SQLFetch(stmt))) {
      for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(columns); ++i) {
        SQLLEN indicator = 0;
        SQLGetData(stmt, i, SQL_C_WCHAR, value, sizeof value, &indicator);
        if (i == 1 && firsts) {
          firsts->push_back(indicator == SQL_NULL_DATA
                                ? std::string()
                                : ToUtf8(StringView(value, static_cast<size_t>(indicator) / 2)));
        }
      }
      ++rows;
    }
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    return rows;
  }

  SQLHENV env_ = SQL_NULL_HENV;
  SQLHDBC dbc_ = SQL_NULL_HDBC;
  bool connected_ = false;
};

}  // namespace
#endif

std::unique_ptr<Floor> OpenFloor(const std::string& connection_string) {
#ifdef KAVRIN_WITH_ODBC
  if (connection_string.rfind("odbc:", 0) == 0)
    return std::make_unique<OdbcFloor>(connection_string.substr(5));
#endif
  return std::make_unique<SqliteFloor>(connection_string.substr(connection_string.find(':') + 1));
}

}  // namespace kavrin::bench
