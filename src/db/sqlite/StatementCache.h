// Compiled statements kept per text on one SQLite connection, so that a text
// run again is stepped and not compiled again. A statement in use by a cursor
// is taken out of the cache and comes back when the cursor lets it go; a
// text asked for while its statement is in use is compiled anew. Schema
// changes are the engine's business: a statement compiled by
// sqlite3_prepare_v3 compiles itself again when the schema it read changed.
#pragma once

#include <sqlite3.h>

#include <list>
#include <memory>
#include <unordered_map>

#include "kavrin/String.h"

namespace kavrin::db::sqlite {

class StatementCache;

// Owns a statement: gives it back to the cache it came from when that
// still exists (and it is meant to go back), else finalizes it.
struct StatementDeleter {
  std::weak_ptr<StatementCache> home;
  String key;
  void operator()(sqlite3_stmt* stmt) const;
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

class StatementCache : public std::enable_shared_from_this<StatementCache> {
 public:
  explicit StatementCache(size_t capacity) : capacity_(capacity) {}
  ~StatementCache();
  StatementCache(const StatementCache&) = delete;
  StatementCache& operator=(const StatementCache&) = delete;

  // The idle statement compiled from `key`, taken out of the cache; null
  // when there is none. Either way the statement returned (or the one the
  // caller compiles and hands to Adopt) comes back here when released.
  Statement Take(const String& key);
  // A statement just compiled from `key`, owned so that it comes back here.
  Statement Adopt(const String& key, sqlite3_stmt* stmt);

  // Takes back a statement no longer in use: reset, its values cleared,
  // kept as the most recently used; the least recently used beyond the
  // capacity is finalized.
  void Give(const String& key, sqlite3_stmt* stmt);

  // Finalizes every idle statement.
  void Clear();

 private:
  using Entry = std::pair<String, sqlite3_stmt*>;
  size_t capacity_;
  std::list<Entry> order_;  // most recently used first
  std::unordered_map<String, std::list<Entry>::iterator> idle_;
};

}  // namespace kavrin::db::sqlite
