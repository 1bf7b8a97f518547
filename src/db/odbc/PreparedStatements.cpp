#include "db/odbc/PreparedStatements.h"

namespace kavrin::db::odbc {

std::optional<PreparedStatement> PreparedStatements::Take(const String& text) {
  const auto found = idle_.find(text);
  if (found == idle_.end()) return std::nullopt;
  PreparedStatement statement = std::move(found->second->second);
  order_.erase(found->second);
  idle_.erase(found);
  return statement;
}

void PreparedStatements::Give(const String& text, PreparedStatement statement) {
  if (capacity_ == 0 || idle_.contains(text)) return;  // freed with `statement`
  order_.emplace_front(text, std::move(statement));
  idle_.emplace(text, order_.begin());
  if (order_.size() > capacity_) {
    idle_.erase(order_.back().first);
    order_.pop_back();
  }
}

void PreparedStatements::Refuse(const String& text) {
  if (refused_.size() >= capacity_) refused_.clear();
  refused_.insert(text);
}

void PreparedStatements::Clear() {
  idle_.clear();
  order_.clear();
}

}  // namespace kavrin::db::odbc
