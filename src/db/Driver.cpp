#include "db/Driver.h"

#include "db/sqlite/SqliteConnection.h"
#ifdef KAVRIN_WITH_ODBC
#include "db/odbc/OdbcConnection.h"
#endif
#include "kavrin/Error.h"

namespace kavrin::db {

namespace {

bool StartsWithNoCase(StringView text, StringView prefix) {
  return text.size() >= prefix.size() && EqualsNoCase(text.substr(0, prefix.size()), prefix);
}

bool EndsWithNoCase(StringView text, StringView suffix) {
  return text.size() >= suffix.size() &&
         EqualsNoCase(text.substr(text.size() - suffix.size()), suffix);
}

std::unique_ptr<Connection> OpenAny(StringView connection_string, bool writable) {
  if (StartsWithNoCase(connection_string, u"sqlite:")) {
    return sqlite::OpenFile(ToUtf8(connection_string.substr(7)), writable);
  }
  if (StartsWithNoCase(connection_string, u"odbc:")) {
#ifdef KAVRIN_WITH_ODBC
    return odbc::Connect(connection_string.substr(5), writable);
#else
    throw Error(errors::kProviderFailure, String(sources::kComponent),
                u"This build of Kavrin has no ODBC driver (configure with KAVRIN_WITH_ODBC=ON).");
#endif
  }
  if (EndsWithNoCase(connection_string, u".db") || EndsWithNoCase(connection_string, u".sqlite")) {
    return sqlite::OpenFile(ToUtf8(connection_string), writable);
  }
  throw Error(errors::kProviderFailure, String(sources::kComponent),
              u"Unknown connection string: " + String(connection_string) +
                  u" (expected sqlite:PATH, a .db or .sqlite path, or odbc:...)");
}

}  // namespace

int64_t Connection::Count(StringView sql) {
  auto cursor = Query(sql);
  int64_t rows = 0;
  while (cursor->Next())
    ++rows;
  return rows;
}

std::unique_ptr<Table> Connection::OpenTable(StringView) {
  return nullptr;
}

std::unique_ptr<Connection> Open(StringView connection_string) {
  return OpenAny(connection_string, false);
}

std::unique_ptr<Connection> OpenForSetup(StringView connection_string) {
  return OpenAny(connection_string, true);
}

}  // namespace kavrin::db
