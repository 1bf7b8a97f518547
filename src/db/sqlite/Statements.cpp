#include "db/sqlite/Statements.h"

#include <cstring>

#include "db/DeclaredType.h"
#include "db/sqlite/Dialect.h"

namespace kavrin::db::sqlite {

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

ColumnInfo Describer::Describe(sqlite3_stmt* stmt, int i) {
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

}  // namespace kavrin::db::sqlite
