// Statements prepared once per shape on one ODBC connection (SQLPrepare) and
// executed again with each call's values bound, so that the server parses
// and plans a shape once instead of every text. A statement in use by a
// cursor is taken out and comes back when the cursor is done with it; a
// shape asked for while its statement is in use is prepared anew.
#pragma once

#include <list>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "db/Driver.h"
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

}  // namespace kavrin::db::odbc
