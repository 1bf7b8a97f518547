#include "db/sqlite/StatementCache.h"

namespace kavrin::db::sqlite {

void StatementDeleter::operator()(sqlite3_stmt* stmt) const {
  if (const auto cache = home.lock()) {
    cache->Give(key, stmt);
  } else {
    sqlite3_finalize(stmt);
  }
}

StatementCache::~StatementCache() {
  Clear();
}

Statement StatementCache::Take(const String& key) {
  const auto found = idle_.find(key);
  if (found == idle_.end()) return Statement(nullptr, StatementDeleter{weak_from_this(), key});
  sqlite3_stmt* stmt = found->second->second;
  order_.erase(found->second);
  idle_.erase(found);
  return Statement(stmt, StatementDeleter{weak_from_this(), key});
}

Statement StatementCache::Adopt(const String& key, sqlite3_stmt* stmt) {
  return Statement(stmt, StatementDeleter{weak_from_this(), key});
}

void StatementCache::Give(const String& key, sqlite3_stmt* stmt) {
  sqlite3_reset(stmt);
  sqlite3_clear_bindings(stmt);
  if (capacity_ == 0 || idle_.contains(key)) {
    sqlite3_finalize(stmt);
    return;
  }
  order_.emplace_front(key, stmt);
  idle_.emplace(key, order_.begin());
  if (order_.size() > capacity_) {
    idle_.erase(order_.back().first);
    sqlite3_finalize(order_.back().second);
    order_.pop_back();
  }
}

void StatementCache::Clear() {
  for (auto& [key, stmt] : order_)
    sqlite3_finalize(stmt);
  order_.clear();
  idle_.clear();
}

}  // namespace kavrin::db::sqlite
