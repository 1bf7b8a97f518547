#include "db/odbc/PreparedStatements.h"

#include <algorithm>
#include <cstdint>

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

String PostgresPreparedText(const StatementShape& shape) {
  String text;
  text.reserve(shape.text.size() + 10 * shape.marks.size());
  size_t copied = 0;
  for (size_t i = 0; i < shape.marks.size(); ++i) {
    const size_t mark = shape.marks[i];
    text.append(shape.text, copied, mark + 1 - copied);
    copied = mark + 1;
    if (const auto* number = std::get_if<int64_t>(&shape.values[i])) {
      text += *number > INT32_MAX ? u"::bigint" : u"::integer";
    }
  }
  text.append(shape.text, copied);
  return text;
}

bool Prepare(SQLHSTMT stmt, const String& text, size_t values) {
  if (!Succeeded(SQLPrepareW(stmt, Wide(text.data()), static_cast<SQLINTEGER>(text.size()))))
    return false;
  SQLSMALLINT marks = 0;
  return Succeeded(SQLNumParams(stmt, &marks)) && static_cast<size_t>(marks) == values;
}

SQLRETURN BoundValues::Bind(SQLHSTMT stmt) {
  for (size_t i = 0; i < values_.size(); ++i) {
    const auto number = static_cast<SQLUSMALLINT>(i + 1);
    SQLRETURN rc;
    if (auto* text = std::get_if<String>(&values_[i])) {
      lengths_[i] = static_cast<SQLLEN>(text->size() * sizeof(char16_t));
      rc = SQLBindParameter(stmt, number, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR,
                            std::max<SQLULEN>(text->size(), 1), 0, Wide(text->data()), lengths_[i],
                            &lengths_[i]);
    } else {
      lengths_[i] = 0;
      rc = SQLBindParameter(stmt, number, SQL_PARAM_INPUT, SQL_C_SBIGINT, SQL_BIGINT, 0, 0,
                            &std::get<int64_t>(values_[i]), 0, &lengths_[i]);
    }
    if (!Succeeded(rc)) return rc;
  }
  return SQL_SUCCESS;
}

}  // namespace kavrin::db::odbc
