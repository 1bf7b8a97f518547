#include "db/odbc/OdbcConnection.h"

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <atomic>
#include <cstdio>
#include <optional>

#include "db/DeclaredType.h"
#include "db/SqlLexer.h"
#include "db/StatementShape.h"
#include "db/odbc/OdbcHandle.h"
#include "db/odbc/PostgresTable.h"
#include "db/odbc/PreparedStatements.h"
#include "kavrin/Error.h"
#include "kavrin/OleDate.h"

namespace kavrin::db::odbc {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "the wide ODBC API must be UTF-16");

namespace {

const String kSource(sources::kOdbc);

// Statements kept prepared per connection, and the longest text prepared.
constexpr size_t kPreparedStatements = 128;
constexpr size_t kLongestPreparedText = 8192;

std::atomic<uint64_t> statements_sent{0};

bool Contains(StringView text, StringView part) {
  return text.find(part) != StringView::npos;
}

[[noreturn]] void Refuse(StringView why) {
  throw Error(errors::kProviderSyntax, kSource, String(why));
}

// The value type of a result column, from the ODBC type and the server's name
// for it (booleans that a driver hands out as text still read as Booleans).
VarType TypeFromOdbc(SQLSMALLINT sql_type, StringView type_name) {
  if (TypeFromDeclared(type_name) == VarType::Boolean) return VarType::Boolean;
  switch (sql_type) {
    case SQL_BIT:
      return VarType::Boolean;
    case SQL_TINYINT:
      return VarType::Byte;
    case SQL_SMALLINT:
      return VarType::Integer;
    case SQL_INTEGER:
      return VarType::Long;
    case SQL_BIGINT:
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_NUMERIC:
    case SQL_DECIMAL:
      return VarType::Double;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
    case SQL_DATE:
    case SQL_TIMESTAMP:
      return VarType::Date;
    case SQL_CHAR:
    case SQL_VARCHAR:
    case SQL_LONGVARCHAR:
    case SQL_WCHAR:
    case SQL_WVARCHAR:
    case SQL_WLONGVARCHAR:
      return VarType::String;
    default:
      return VarType::Variant;  // read as its text
  }
}

String ReadText(const Handle& stmt, SQLUSMALLINT column, bool& is_null) {
  String text;
  char16_t buffer[2048];
  constexpr auto kBytes = static_cast<SQLLEN>(sizeof buffer);
  for (;;) {
    SQLLEN indicator = 0;
    const SQLRETURN rc = SQLGetData(stmt.get(), column, SQL_C_WCHAR, buffer, kBytes, &indicator);
    if (rc == SQL_NO_DATA) break;
    Check(stmt, rc, u"reading a value");
    if (indicator == SQL_NULL_DATA) {
      is_null = true;
      return {};
    }
    const bool truncated = indicator == SQL_NO_TOTAL || indicator >= kBytes;
    const size_t units = truncated ? std::size(buffer) - 1 : static_cast<size_t>(indicator) / 2;
    text.append(buffer, units);
    if (!truncated) break;
  }
  is_null = false;
  return text;
}

// A server timestamp as a date; one outside the dates' range (years 100 to
// 9999) stays the text the server would show.
Variant TimestampToDate(const SQL_TIMESTAMP_STRUCT& ts) {
  const auto date = MakeDate({ts.year, ts.month, ts.day, ts.hour, ts.minute, ts.second});
  if (!date) {
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02u:%02u:%02u", ts.year, ts.month, ts.day,
                  ts.hour, ts.minute, ts.second);
    return FromUtf8(text);
  }
  const double fraction = static_cast<double>(ts.fraction) / 86400e9;
  return Date{date->value < 0 ? date->value - fraction : date->value + fraction};
}

template <typename T>
bool ReadFixed(const Handle& stmt, SQLUSMALLINT column, SQLSMALLINT c_type, T& value) {
  SQLLEN indicator = 0;
  Check(stmt, SQLGetData(stmt.get(), column, c_type, &value, sizeof value, &indicator),
        u"reading a value");
  return indicator != SQL_NULL_DATA;
}

// A number read as the driver's `c_type` into `Sql` and kept as `Kept`; Null
// stays Null.
template <typename Kept, typename Sql>
Variant ReadNumber(const Handle& stmt, SQLUSMALLINT column, SQLSMALLINT c_type) {
  Sql value = 0;
  if (!ReadFixed(stmt, column, c_type, value)) return Variant::Null();
  return static_cast<Kept>(value);
}

Variant ReadValue(const Handle& stmt, SQLUSMALLINT column, VarType type) {
  switch (type) {
    case VarType::Boolean: {
      SQLCHAR value = 0;
      if (!ReadFixed(stmt, column, SQL_C_BIT, value)) return Variant::Null();
      return value != 0;
    }
    case VarType::Byte:
      return ReadNumber<uint8_t, SQLCHAR>(stmt, column, SQL_C_UTINYINT);
    case VarType::Integer:
      return ReadNumber<int16_t, SQLSMALLINT>(stmt, column, SQL_C_SSHORT);
    case VarType::Long:
      return ReadNumber<int32_t, SQLINTEGER>(stmt, column, SQL_C_SLONG);
    case VarType::Double:
      return ReadNumber<double, SQLDOUBLE>(stmt, column, SQL_C_DOUBLE);
    case VarType::Date: {
      SQL_TIMESTAMP_STRUCT value{};
      if (!ReadFixed(stmt, column, SQL_C_TYPE_TIMESTAMP, value)) return Variant::Null();
      return TimestampToDate(value);
    }
    default: {
      bool is_null = false;
      String text = ReadText(stmt, column, is_null);
      if (is_null) return Variant::Null();
      return text;
    }
  }
}

// The environment and connection handles, shared by a connection and its
// cursors: a cursor that outlives its connection still frees its statement
// before the connection is closed. The prepared statements go first.
struct Session {
  Handle env;
  Handle dbc;
  bool connected = false;
  PreparedStatements prepared{kPreparedStatements};

  Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() {
    prepared.Clear();
    if (connected) SQLDisconnect(dbc.get());
  }
};

class OdbcCursor final : public Cursor {
 public:
  // `shape`, when given, is the text `stmt` was prepared from: the statement
  // goes back to the session's prepared statements once its rows are read
  // or the cursor is let go of.
  OdbcCursor(std::shared_ptr<Session> session, Handle stmt, SharedColumns columns,
             std::optional<String> shape = std::nullopt)
      : session_(std::move(session)),
        stmt_(std::move(stmt)),
        columns_(std::move(columns)),
        shape_(std::move(shape)) {}
  ~OdbcCursor() override { Release(); }
  OdbcCursor(const OdbcCursor&) = delete;
  OdbcCursor& operator=(const OdbcCursor&) = delete;

  const std::vector<ColumnInfo>& Columns() const override { return *columns_; }

  bool Next() override {
    if (!stmt_) return false;
    const SQLRETURN rc = SQLFetch(stmt_.get());
    if (rc == SQL_NO_DATA) {
      Release();
      row_.clear();
      return false;
    }
    if (!Succeeded(rc)) shape_.reset();  // a statement that failed is not kept
    Check(stmt_, rc, u"fetching a row");
    // Every value of the row is read at once, in column order, as some
    // drivers require.
    row_.clear();
    const std::vector<ColumnInfo>& columns = *columns_;
    row_.reserve(columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
      row_.push_back(ReadValue(stmt_, static_cast<SQLUSMALLINT>(i + 1), columns[i].type));
    }
    return true;
  }

  Variant Value(size_t index) const override { return row_.at(index); }

 private:
  void Release() noexcept {
    if (!stmt_) return;
    if (!shape_) {
      stmt_.Reset();
      return;
    }
    SQLFreeStmt(stmt_.get(), SQL_CLOSE);
    try {
      session_->prepared.Give(*shape_, {std::move(stmt_), columns_});
    } catch (...) {
      stmt_.Reset();  // not kept: freed now
    }
  }

  std::shared_ptr<Session> session_;
  Handle stmt_;
  SharedColumns columns_;
  std::optional<String> shape_;
  std::vector<Variant> row_;
};

class OdbcConnection final : public Connection {
 public:
  OdbcConnection(bool writable, const Timeouts& timeouts, bool statement_cache)
      : writable_(writable),
        timeouts_(timeouts),
        statement_cache_(statement_cache),
        session_(std::make_shared<Session>()) {}

  void Connect(StringView connection_string) {
    Handle& env = session_->env;
    env = Handle(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    Check(env,
          SQLSetEnvAttr(env.get(), SQL_ATTR_ODBC_VERSION,
                        reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(SQL_OV_ODBC3)), 0),
          u"choosing ODBC 3");
    session_->dbc = Handle(SQL_HANDLE_DBC, env.get());
    // Timeouts are requests: a driver that does not know one keeps its own.
    SetConnectAttribute(SQL_ATTR_LOGIN_TIMEOUT, timeouts_.login_seconds);
    SetConnectAttribute(SQL_ATTR_CONNECTION_TIMEOUT, timeouts_.connection_seconds);
    const String text(connection_string);
    const SQLRETURN rc = SQLDriverConnectW(Dbc(), nullptr, Wide(text.c_str()), SQL_NTS, nullptr, 0,
                                           nullptr, SQL_DRIVER_NOPROMPT);
    if (!Succeeded(rc)) {
      Fail(SQL_HANDLE_DBC, Dbc(), u"connecting", errors::kProviderFailure);
    }
    session_->connected = true;
    if (!writable_) SetConnectAttribute(SQL_ATTR_ACCESS_MODE, SQL_MODE_READ_ONLY);

    dbms_ = InfoText(SQL_DBMS_NAME);
    SQLUSMALLINT identifier_case = 0;
    if (Succeeded(SQLGetInfoW(Dbc(), SQL_IDENTIFIER_CASE, &identifier_case, sizeof identifier_case,
                              nullptr))) {
      folds_names_to_lower_ = identifier_case == SQL_IC_LOWER;
    }
    if (Contains(dbms_, u"PostgreSQL")) {
      quoting_ = kPostgresProfile;
      // Literals are read as the statement splitter reads them, and a reading
      // session cannot write whatever a statement tries.
      Execute(u"SET standard_conforming_strings = on", timeouts_.query_seconds);
      // Every sequential scan starts at the table's first page, so that
      // SELECT * gives the rows in the order tables are read by key.
      Execute(u"SET synchronize_seqscans = off", timeouts_.query_seconds);
      tables_.emplace(*this);
      // psqlODBC prepares on the server (unless told not to) and sends
      // untyped values, which the server types from their place as it
      // types a quoted literal.
      prepares_ =
          statement_cache_ && !writable_ && Contains(InfoText(SQL_DRIVER_NAME), u"psqlodbc");
      if (!writable_) {
        Execute(u"SET SESSION CHARACTERISTICS AS TRANSACTION READ ONLY", timeouts_.query_seconds);
      }
    } else if (Contains(dbms_, u"SQL Server") || Contains(dbms_, u"Adaptive Server")) {
      quoting_ = kSqlServerProfile;
    }
  }

  std::unique_ptr<Cursor> Query(StringView sql) override {
    // A text with a shape is one SELECT holding nothing to refuse.
    if (prepares_ && sql.size() <= kLongestPreparedText) {
      if (auto cursor = QueryPrepared(sql)) return cursor;
    }
    const auto statements = SplitStatements(sql, quoting_);
    if (statements.empty()) Refuse(u"The command text holds no statement.");
    if (statements.size() > 1) Refuse(u"The command text holds more than one statement.");
    if (!writable_ && !EqualsNoCase(LeadingWord(statements[0], quoting_), u"select")) {
      Refuse(u"Only statements that read are allowed.");
    }
    return QueryDirect(statements[0]);
  }

  void ExecuteScript(StringView sql) override {
    if (!writable_) Refuse(u"The connection is read-only.");
    for (StringView statement : SplitStatements(sql, quoting_)) {
      Handle stmt = Execute(statement, timeouts_.script_seconds);
      SQLRETURN rc;
      while (Succeeded(rc = SQLMoreResults(stmt.get()))) {
      }
      Check(stmt, rc, u"running a script");
    }
  }

  String Engine() const override { return u"odbc"; }
  String Dbms() const override { return dbms_; }

  std::unique_ptr<Table> OpenTable(StringView name) override {
    return tables_ ? tables_->Open(name) : nullptr;
  }

 private:
  SQLHDBC Dbc() const { return session_->dbc.get(); }

  // Runs the text as it is.
  std::unique_ptr<Cursor> QueryDirect(StringView sql) {
    Handle stmt = Execute(sql, timeouts_.query_seconds);
    auto columns = std::make_shared<const std::vector<ColumnInfo>>(DescribeAll(stmt, sql));
    return std::make_unique<OdbcCursor>(session_, std::move(stmt), std::move(columns));
  }

  // Runs the statement prepared for the text's shape with the text's values
  // bound, preparing it on first use; null when the text has no shape. A
  // shape the server will not run with bound values, where it runs the text
  // itself, is not tried again.
  std::unique_ptr<Cursor> QueryPrepared(StringView sql) {
    auto shape = ShapeOf(sql, quoting_);
    if (!shape) return nullptr;
    const String text = PostgresPreparedText(*shape);
    PreparedStatements& prepared = session_->prepared;
    if (prepared.Refused(text)) return nullptr;
    PreparedStatement statement;
    if (auto idle = prepared.Take(text)) {
      statement = std::move(*idle);
    } else {
      statement.stmt = NewStatement(timeouts_.query_seconds);
    }
    const SQLHSTMT stmt = statement.stmt.get();
    const bool fresh = !statement.columns;
    if (fresh && !Prepare(stmt, text, shape->values.size())) {
      prepared.Refuse(text);
      return nullptr;
    }
    BoundValues values(std::move(shape->values));
    statements_sent.fetch_add(1, std::memory_order_relaxed);
    SQLRETURN rc = values.Bind(stmt);
    if (Succeeded(rc)) rc = SQLExecute(stmt);
    if (!Succeeded(rc)) {
      // A lost connection or a timeout is not tried again as a text.
      Error failure = Diagnostics(SQL_HANDLE_STMT, stmt, u"running a statement");
      if (failure.number() == errors::kProviderFailure ||
          failure.number() == errors::kProviderTimeout)
        throw failure;
      // The text fails as it would have. A statement kept from before is
      // let go of (the schema it was planned on may have changed); a shape
      // just prepared that fails where its text runs is not tried again.
      auto cursor = QueryDirect(sql);
      if (fresh) prepared.Refuse(text);
      return cursor;
    }
    SQLFreeStmt(stmt, SQL_RESET_PARAMS);
    if (fresh) {
      statement.columns =
          std::make_shared<const std::vector<ColumnInfo>>(DescribeAll(statement.stmt, sql));
    }
    return std::make_unique<OdbcCursor>(session_, std::move(statement.stmt),
                                        std::move(statement.columns), text);
  }

  void SetConnectAttribute(SQLINTEGER attribute, SQLULEN value) {
    SQLSetConnectAttrW(Dbc(), attribute,
                       reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(value)), 0);
  }

  String InfoText(SQLUSMALLINT what) const {
    SQLWCHAR buffer[256] = {};
    SQLSMALLINT bytes = 0;
    if (!Succeeded(SQLGetInfoW(Dbc(), what, buffer, sizeof buffer, &bytes))) return {};
    return String(reinterpret_cast<const char16_t*>(buffer));
  }

  // A connection the server or the network has dropped fails every call at
  // once, without waiting on the driver.
  void RequireAlive() const {
    SQLUINTEGER dead = SQL_CD_FALSE;
    if (Succeeded(SQLGetConnectAttrW(Dbc(), SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr)) &&
        dead == SQL_CD_TRUE) {
      throw Error(errors::kProviderFailure, kSource,
                  u"The connection to the database server has been lost.");
    }
  }

  // A statement handle with the time a statement may run.
  Handle NewStatement(SQLULEN timeout_seconds) {
    RequireAlive();
    Handle stmt(SQL_HANDLE_STMT, Dbc());
    SQLSetStmtAttrW(stmt.get(), SQL_ATTR_QUERY_TIMEOUT,
                    reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(timeout_seconds)), 0);
    return stmt;
  }

  Handle Execute(StringView sql, SQLULEN timeout_seconds) {
    Handle stmt = NewStatement(timeout_seconds);
    const String text(sql);
    statements_sent.fetch_add(1, std::memory_order_relaxed);
    const SQLRETURN rc =
        SQLExecDirectW(stmt.get(), Wide(text.data()), static_cast<SQLINTEGER>(text.size()));
    Check(stmt, rc, u"running a statement");
    return stmt;
  }

  std::vector<ColumnInfo> DescribeAll(const Handle& stmt, StringView sql) const {
    SQLSMALLINT count = 0;
    Check(stmt, SQLNumResultCols(stmt.get(), &count), u"describing the result");
    std::vector<ColumnInfo> columns;
    columns.reserve(static_cast<size_t>(count));
    for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(count); ++i) {
      columns.push_back(Describe(stmt, i, sql));
    }
    return columns;
  }

  ColumnInfo Describe(const Handle& stmt, SQLUSMALLINT column, StringView sql) const {
    SQLWCHAR name[256] = {};
    SQLSMALLINT name_length = 0;
    SQLSMALLINT sql_type = 0;
    SQLULEN size = 0;
    SQLSMALLINT digits = 0;
    SQLSMALLINT nullable = 0;
    Check(stmt,
          SQLDescribeColW(stmt.get(), column, name, static_cast<SQLSMALLINT>(std::size(name)),
                          &name_length, &sql_type, &size, &digits, &nullable),
          u"describing a column");
    SQLWCHAR type_name[128] = {};
    SQLSMALLINT type_name_bytes = 0;
    SQLColAttributeW(stmt.get(), column, SQL_DESC_TYPE_NAME, type_name, sizeof type_name,
                     &type_name_bytes, nullptr);
    ColumnInfo info;
    info.name = reinterpret_cast<const char16_t*>(name);
    info.type = TypeFromOdbc(sql_type, reinterpret_cast<const char16_t*>(type_name));
    if (folds_names_to_lower_) info.name = SpellingIn(sql, info.name);
    return info;
  }

  // A server that folds unquoted names to lower case hands back "curmonth"
  // for "AS CurMonth": the name takes the spelling the statement gives it.
  String SpellingIn(StringView sql, const String& name) const {
    for (char16_t c : name) {
      if (c >= u'A' && c <= u'Z') return name;  // a quoted name, kept as it is
    }
    for (StringView word : Words(sql, quoting_)) {
      if (EqualsNoCase(word, name)) return String(word);
    }
    return name;
  }

  bool writable_;
  Timeouts timeouts_;
  bool statement_cache_;
  std::shared_ptr<Session> session_;
  String dbms_;
  SqlProfile quoting_ = kStandardProfile;
  bool folds_names_to_lower_ = false;
  bool prepares_ = false;                 // statements that read are prepared per shape
  std::optional<PostgresTables> tables_;  // on PostgreSQL
};

}  // namespace

uint64_t StatementsSent() {
  return statements_sent.load(std::memory_order_relaxed);
}

std::unique_ptr<Connection> Connect(StringView connection_string, bool writable,
                                    const Timeouts& timeouts, bool statement_cache) {
  auto connection = std::make_unique<OdbcConnection>(writable, timeouts, statement_cache);
  connection->Connect(connection_string);
  return connection;
}

}  // namespace kavrin::db::odbc
