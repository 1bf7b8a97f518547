// The shared state behind the ADO and kit objects.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "db/Driver.h"
#include "kavrin/Ado.h"
#include "kavrin/KitDatabase.h"
#include "platform/Rows.h"

namespace kavrin::detail {

struct ConnectionState : std::enable_shared_from_this<ConnectionState> {
  std::unique_ptr<db::Connection> engine;
  ado::Connection::TraceObserver trace;

  // Reports a source text to the trace observer.
  void Trace(StringView source) const {
    if (trace) trace(source);
  }

  // The row count of statement `sql` counted at data version `version`, if
  // one was. A count holds for exactly the data it was counted on.
  std::optional<int64_t> KnownCount(const String& sql,
                                    const std::optional<db::DataVersion>& version) const;
  void RememberCount(const String& sql, const std::optional<db::DataVersion>& version,
                     int64_t rows);

 private:
  struct Counted {
    db::DataVersion version;
    int64_t rows;
  };
  std::unordered_map<String, Counted> counts_;
};

// An open record set: its columns and its rows with the current position.
// A set without rows (rows == nullptr) is empty; a closed one is not open.
struct RecordsetState {
  bool open = false;
  int32_t cursor_location = ado::adUseServer;
  bool counts_rows = false;  // a static cursor knows its count; forward-only answers -1
  std::vector<db::ColumnInfo> columns;
  std::unique_ptr<RowSource> rows;

  bool Bof() const { return !rows || rows->Empty(); }
  bool Eof() const { return !rows || rows->AtEnd(); }
  // The current row's values; nullptr when there is none.
  const std::vector<Variant>* CurrentRow() const { return rows ? rows->Current() : nullptr; }
  int64_t Count() const { return rows ? rows->Count() : 0; }
  std::optional<size_t> ColumnIndex(StringView name) const;

  // Takes the columns and rows of a record set just opened; the position is
  // its first row.
  void Assign(OpenedRows opened);
  // Throws 3704 when closed.
  void RequireOpen() const;
};

// A kit record set over `source` as OpenQuery opens it, but with every row
// read at once: the reference lazily read record sets answer as.
std::shared_ptr<KitRecordset> OpenFullyLoaded(KitDatabase& db, StringView source);

String SelectAllFrom(StringView table);
// True when `source` is a bare table name (words joined by dots) rather than a
// statement.
bool IsBareTableName(StringView source);

}  // namespace kavrin::detail
