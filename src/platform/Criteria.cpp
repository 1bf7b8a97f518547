#include "platform/Criteria.h"

#include <optional>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"

namespace kavrin::detail {

namespace {

// The name a text column without a server collation is compared under: the
// server's default, ignoring case and width.
const String kDefaultCollationName = u"SQL_Latin1_General_CP1_CI_AS";

[[noreturn]] void CriteriaTypeMismatch() {
  throw Error::Standard(errors::kCriteriaTypeMismatch, sources::kKitRecordset);
}

// A column value as the server holds it for a numeric comparison: a bit is
// 1 or 0, a date its serial number.
double AsServerNumber(const Variant& value) {
  if (value.type() == VarType::Boolean) return value.AsBoolean() ? 1.0 : 0.0;
  if (value.IsString()) {
    double number = 0;
    if (!TryParseNumber(value.AsString(), number)) CriteriaTypeMismatch();
    return number;
  }
  return ToDouble(value);
}

[[noreturn]] void SyntaxError(StringView criteria) {
  throw Error::Standard(errors::kCriteriaSyntax, sources::kKitRecordset, criteria);
}

class Reader {
 public:
  explicit Reader(StringView text) : text_(text) {}

  void SkipBlanks() {
    while (pos_ < text_.size() && (text_[pos_] == u' ' || text_[pos_] == u'\t'))
      ++pos_;
  }
  bool AtEnd() {
    SkipBlanks();
    return pos_ >= text_.size();
  }
  bool Accept(StringView token) {
    SkipBlanks();
    if (text_.substr(pos_, token.size()) != token) return false;
    pos_ += token.size();
    return true;
  }
  // A keyword such as AND: letters in any case, not followed by a word character.
  bool AcceptKeyword(StringView keyword) {
    SkipBlanks();
    if (pos_ + keyword.size() > text_.size() ||
        !EqualsNoCase(text_.substr(pos_, keyword.size()), keyword)) {
      return false;
    }
    const size_t end = pos_ + keyword.size();
    if (end < text_.size() && IsWordChar(text_[end])) return false;
    pos_ = end;
    return true;
  }
  String Identifier() {
    SkipBlanks();
    if (Accept(u"[")) {
      const size_t close = text_.find(u']', pos_);
      if (close == StringView::npos) return {};
      String name(text_.substr(pos_, close - pos_));
      pos_ = close + 1;
      return name;
    }
    const size_t start = pos_;
    while (pos_ < text_.size() && IsWordChar(text_[pos_]))
      ++pos_;
    return String(text_.substr(start, pos_ - start));
  }
  // A quoted text, a number, True or False; nullopt when none stands here.
  std::optional<Variant> Literal() {
    SkipBlanks();
    if (Accept(u"'")) {
      String value;
      while (pos_ < text_.size()) {
        const char16_t c = text_[pos_++];
        if (c != u'\'') {
          value.push_back(c);
        } else if (pos_ < text_.size() && text_[pos_] == u'\'') {
          value.push_back(u'\'');
          ++pos_;
        } else {
          return Variant(std::move(value));
        }
      }
      return std::nullopt;  // unterminated
    }
    if (AcceptKeyword(u"True")) return Variant(true);
    if (AcceptKeyword(u"False")) return Variant(false);
    const size_t start = pos_;
    while (pos_ < text_.size() && (IsWordChar(text_[pos_]) || text_[pos_] == u'.' ||
                                   text_[pos_] == u'-' || text_[pos_] == u'+')) {
      ++pos_;
    }
    double number = 0;
    if (start == pos_ || !TryParseNumber(text_.substr(start, pos_ - start), number)) {
      return std::nullopt;
    }
    return Variant(number);
  }

 private:
  static bool IsWordChar(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'_' || c >= 0x80;
  }

  StringView text_;
  size_t pos_ = 0;
};

}  // namespace

std::vector<Comparison> ParseCriteria(StringView criteria) {
  Reader reader(criteria);
  std::vector<Comparison> comparisons;
  do {
    Comparison comparison;
    comparison.column = reader.Identifier();
    if (comparison.column.empty()) SyntaxError(criteria);
    if (reader.Accept(u"<>")) {
      comparison.equal = false;
    } else if (!reader.Accept(u"=")) {
      SyntaxError(criteria);
    }
    auto literal = reader.Literal();
    if (!literal) SyntaxError(criteria);
    comparison.literal = std::move(*literal);
    comparisons.push_back(std::move(comparison));
  } while (reader.AcceptKeyword(u"AND"));
  if (!reader.AtEnd()) SyntaxError(criteria);
  return comparisons;
}

BoundCriteria::BoundCriteria(StringView criteria, const std::vector<db::ColumnInfo>& columns) {
  for (auto& comparison : ParseCriteria(criteria)) {
    size_t column = 0;
    while (column < columns.size() && !EqualsNoCase(columns[column].name, comparison.column))
      ++column;
    if (column == columns.size()) {
      throw Error::Standard(errors::kUnknownColumn, sources::kKitRecordset, comparison.column);
    }
    const db::ColumnInfo& info = columns[column];
    const auto collation = db::CollationFromName(info.collation);
    bound_.push_back({column, collation.value_or(db::kDefaultCollation),
                      collation ? info.collation : kDefaultCollationName,
                      info.type == VarType::String, std::move(comparison)});
  }
}

bool BoundCriteria::Satisfies(const Variant& value, const Bound& bound) {
  const Comparison& comparison = bound.comparison;
  if (value.IsNull() || value.IsEmpty()) return false;
  bool equal = false;
  if (comparison.literal.IsString() && value.IsString()) {
    equal = bound.collation.Equal(value.AsString(), comparison.literal.AsString());
  } else {
    equal = AsServerNumber(value) == AsServerNumber(comparison.literal);
  }
  return equal == comparison.equal;
}

std::vector<db::TextCondition> BoundCriteria::EngineConditions() const {
  // A character column holds texts or Nulls, so a text literal is compared
  // under the collation and never as a number: the comparison cannot fail.
  std::vector<db::TextCondition> conditions;
  for (const auto& b : bound_) {
    if (!b.text_column || !b.comparison.literal.IsString()) break;
    conditions.push_back(
        {b.column, b.comparison.equal, b.comparison.literal.AsString(), b.collation_name});
  }
  return conditions;
}

}  // namespace kavrin::detail
