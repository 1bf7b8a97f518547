// Statements prepared once per shape on one ODBC connection (SQLPrepare) and
// executed again with each call's values bound, so that the server parses
// and plans a shape once instead of every text. A statement in use by a
// cursor is taken out and comes back when the cursor is done with it; a
// shape asked for while its statement is in use is prepared anew. Beside
// them, what preparing a shape takes: the text the server prepares and the
// values bound to it.
#pragma once

#include <list>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

#include "db/Driver.h"
#include "db/StatementShape.h"
#include "db/odbc/OdbcHandle.h"

namespace kavrin::db::odbc {

using SharedColumns = std::shared_ptr<const std::vector<ColumnInfo>>;

// A prepared statement with the columns its first execution described
// (null before that).
struct PreparedStatement {
  Handle stmt;
  SharedColumns columns;
};

class PreparedStatements {
 public:
  explicit PreparedStatements(size_t capacity) : capacity_(capacity) {}

  // The idle statement prepared from `text`, taken out; nullopt when none.
  std::optional<PreparedStatement> Take(const String& text);

  // Takes back a statement whose cursor is closed and whose values are
  // unbound, kept as the most recently used; the least recently used beyond
  // the capacity is freed.
  void Give(const String& text, PreparedStatement statement);

  // Shapes the server refused with values bound where it ran the same text
  // with its literals: they run as texts from then on.
  bool Refused(const String& text) const { return refused_.contains(text); }
  void Refuse(const String& text);

  // Frees every idle statement (before the connection they belong to closes).
  void Clear();

 private:
  using Entry = std::pair<String, PreparedStatement>;
  size_t capacity_;
  std::list<Entry> order_;  // most recently used first
  std::unordered_map<String, std::list<Entry>::iterator> idle_;
  std::unordered_set<String> refused_;
};

// The text a PostgreSQL server prepares for `shape`: a whole number's mark
// cast to the type the server gives the literal it stands for (integer, or
// bigint beyond 2^31 - 1), a text's mark left untyped as a quoted literal is,
// so that the server types it from its place.
String PostgresPreparedText(const StatementShape& shape);

// Prepares `text` on `stmt`; false when the driver refuses it or counts
// other than `values` parameter marks in it.
bool Prepare(SQLHSTMT stmt, const String& text, size_t values);

// The values of a shape in the buffers the driver reads them from while the
// statement executes: texts as wide text, whole numbers as 64-bit integers.
class BoundValues {
 public:
  explicit BoundValues(std::vector<std::variant<String, int64_t>> values)
      : values_(std::move(values)), lengths_(values_.size()) {}
  BoundValues(const BoundValues&) = delete;
  BoundValues& operator=(const BoundValues&) = delete;

  // Binds every value to `stmt`, which must execute before this object goes.
  SQLRETURN Bind(SQLHSTMT stmt);

 private:
  std::vector<std::variant<String, int64_t>> values_;
  std::vector<SQLLEN> lengths_;
};

}  // namespace kavrin::db::odbc
