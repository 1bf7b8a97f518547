#include "db/Driver.h"

#include <algorithm>
#include <utility>

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

// The statement cache switch, taken out of a connection string: a trailing
// "?statement_cache=off" (or "=on") after a SQLite path, an attribute
// "KavrinStatementCache=0" (or "=1") in an ODBC connection string.
struct Switches {
  String rest;  // the connection string without the switch
  bool statement_cache = true;
};

Switches TakeSwitches(StringView connection_string) {
  Switches taken{String(connection_string)};
  String& text = taken.rest;
  if (StartsWithNoCase(text, u"odbc:")) {
    constexpr StringView kAttribute = u"kavrinstatementcache=";
    for (size_t begin = 5; begin < text.size();) {
      size_t end = text.find(u';', begin);
      if (end == String::npos) end = text.size();
      const StringView pair = StringView(text).substr(begin, end - begin);
      if (StartsWithNoCase(pair, kAttribute)) {
        const StringView value = pair.substr(kAttribute.size());
        if (value != u"0" && value != u"1") {
          throw Error(errors::kProviderFailure, String(sources::kComponent),
                      u"KavrinStatementCache takes 0 or 1, not " + String(value) + u".");
        }
        taken.statement_cache = value == u"1";
        text.erase(begin, std::min(end + 1, text.size()) - begin);
        continue;
      }
      begin = end + 1;
    }
    return taken;
  }
  for (const auto& [suffix, on] : {std::pair<StringView, bool>{u"?statement_cache=off", false},
                                   std::pair<StringView, bool>{u"?statement_cache=on", true}}) {
    if (EndsWithNoCase(text, suffix)) {
      text.resize(text.size() - suffix.size());
      taken.statement_cache = on;
      break;
    }
  }
  return taken;
}

std::unique_ptr<Connection> OpenAny(StringView given, bool writable) {
  const Switches switches = TakeSwitches(given);
  const StringView connection_string = switches.rest;
  const bool cache = switches.statement_cache;
  if (StartsWithNoCase(connection_string, u"sqlite:")) {
    return sqlite::OpenFile(ToUtf8(connection_string.substr(7)), writable,
                            sqlite::kStatementTimeLimit, cache);
  }
  if (StartsWithNoCase(connection_string, u"odbc:")) {
#ifdef KAVRIN_WITH_ODBC
    return odbc::Connect(connection_string.substr(5), writable, {}, cache);
#else
    throw Error(errors::kProviderFailure, String(sources::kComponent),
                u"This build of Kavrin has no ODBC driver (configure with KAVRIN_WITH_ODBC=ON).");
#endif
  }
  if (EndsWithNoCase(connection_string, u".db") || EndsWithNoCase(connection_string, u".sqlite")) {
    return sqlite::OpenFile(ToUtf8(connection_string), writable, sqlite::kStatementTimeLimit,
                            cache);
  }
  throw Error(errors::kProviderFailure, String(sources::kComponent),
              u"Unknown connection string: " + String(given) +
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
