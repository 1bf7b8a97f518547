#include "db/odbc/OdbcHandle.h"

#include <algorithm>

namespace kavrin::db::odbc {

namespace {

bool StartsWith(StringView text, StringView prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

// The provider number for a SQLSTATE: unknown tables, lost or refused
// connections, timeouts; everything else is a rejected statement.
int32_t NumberForState(StringView state) {
  if (state == u"42S02" || state == u"42P01") return errors::kProviderNoTable;
  if (StartsWith(state, u"08") || state == u"HYT01" || state == u"57P01" || state == u"57P02" ||
      state == u"57P03") {
    return errors::kProviderFailure;
  }
  if (state == u"HYT00" || state == u"57014") return errors::kProviderTimeout;
  return errors::kProviderSyntax;
}

String TrimEnd(String text) {
  while (!text.empty() && (text.back() == u' ' || text.back() == u'\n' || text.back() == u'\r' ||
                           text.back() == u'\t')) {
    text.pop_back();
  }
  return text;
}

}  // namespace

Error Diagnostics(SQLSMALLINT type, SQLHANDLE handle, StringView doing,
                  std::optional<int32_t> number) {
  String description;
  String first_state;
  for (SQLSMALLINT record = 1;; ++record) {
    SQLWCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    SQLRETURN rc = SQLGetDiagRecW(type, handle, record, state, &native, nullptr, 0, &length);
    if (!Succeeded(rc)) break;
    String message(static_cast<size_t>(length) + 1, u'\0');
    rc = SQLGetDiagRecW(type, handle, record, state, &native, Wide(message.data()),
                        static_cast<SQLSMALLINT>(message.size()), &length);
    if (!Succeeded(rc)) break;
    message.resize(std::min<size_t>(static_cast<size_t>(length), message.size() - 1));
    message = TrimEnd(message.substr(0, message.find(u'\0')));
    const String sqlstate(reinterpret_cast<const char16_t*>(state), 5);
    if (first_state.empty()) first_state = sqlstate;
    if (message.empty()) continue;  // some drivers repeat a state without a message
    if (!description.empty()) description += u"\n";
    description += message + u" (SQLSTATE " + sqlstate + u")";
  }
  if (description.empty()) {
    description = u"The ODBC driver failed while " + String(doing) + u" and gave no reason.";
  }
  const int32_t chosen =
      number ? *number
             : (first_state.empty() ? errors::kProviderFailure : NumberForState(first_state));
  return Error(chosen, String(sources::kOdbc), description);
}

void Fail(SQLSMALLINT type, SQLHANDLE handle, StringView doing, std::optional<int32_t> number) {
  throw Diagnostics(type, handle, doing, number);
}

Handle::Handle(SQLSMALLINT type, SQLHANDLE parent) : type_(type) {
  if (!Succeeded(SQLAllocHandle(type, parent, &handle_))) {
    handle_ = SQL_NULL_HANDLE;
    if (parent != SQL_NULL_HANDLE) {
      Fail(type == SQL_HANDLE_STMT ? SQL_HANDLE_DBC : SQL_HANDLE_ENV, parent,
           u"allocating a handle");
    }
    throw Error(errors::kProviderFailure, String(sources::kOdbc),
                u"The ODBC driver manager could not be initialized.");
  }
}

}  // namespace kavrin::db::odbc
