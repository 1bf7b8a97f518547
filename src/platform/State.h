// The shared state behind the ADO and kit objects.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "db/Driver.h"
#include "kavrin/Ado.h"

namespace kavrin::detail {

struct ConnectionState {
  std::unique_ptr<db::Connection> engine;
  ado::Connection::TraceObserver trace;

  // Reports a source text to the trace observer, then runs it.
  std::unique_ptr<db::Cursor> Query(StringView traced_source, StringView sql) {
    if (trace) trace(traced_source);
    return engine->Query(sql);
  }
};

// Rows of an open record set and the current position in them. Position -1
// is before the first row; rows.size() is after the last.
struct RecordsetState {
  bool open = false;
  int32_t cursor_location = ado::adUseServer;
  bool counts_rows = false;  // a static cursor knows its count; forward-only answers -1
  std::vector<db::ColumnInfo> columns;
  std::vector<std::vector<Variant>> rows;
  int64_t position = 0;

  bool Bof() const { return rows.empty() || position < 0; }
  bool Eof() const { return rows.empty() || position >= static_cast<int64_t>(rows.size()); }
  bool HasCurrentRow() const { return !Bof() && !Eof(); }
  std::optional<size_t> ColumnIndex(StringView name) const;

  // Loads every row of `cursor` and positions on the first.
  void Load(db::Cursor& cursor);
  // Throws 3704 when closed.
  void RequireOpen() const;
};

String SelectAllFrom(StringView table);
// True when `source` is a bare table name rather than a statement.
bool IsBareTableName(StringView source);

}  // namespace kavrin::detail
