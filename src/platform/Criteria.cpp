#include "platform/Criteria.h"

#include <optional>

#include "db/SqlLexer.h"
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

// Reads criteria token by token, as the kit's expressions are written:
// [names] or plain ones, 'texts' with doubled quotes, numbers, True and False.
// Blanks are spaces and tabs alone.
class Reader {
 public:
  explicit Reader(StringView text) : text_(text) {
    for (const db::SqlToken& token : db::Tokenize(text, db::kKitProfile)) {
      if (!token.terminated || (token.kind == db::TokenKind::Blanks &&
                                token.In(text).find_first_not_of(u" \t") != StringView::npos)) {
        readable_ = false;
      }
      tokens_.push_back(token);
    }
  }

  // False for a text that holds an unterminated literal or name, or a blank
  // that is neither a space nor a tab.
  bool Readable() const { return readable_; }
  bool AtEnd() {
    SkipBlanks();
    return pos_ >= tokens_.size();
  }
  bool Accept(StringView op) {
    SkipBlanks();
    if (pos_ >= tokens_.size() || tokens_[pos_].kind != db::TokenKind::Operator ||
        tokens_[pos_].In(text_) != op) {
      return false;
    }
    ++pos_;
    return true;
  }
  // A keyword such as AND, in any case.
  bool AcceptKeyword(StringView keyword) {
    SkipBlanks();
    if (pos_ >= tokens_.size() || tokens_[pos_].kind != db::TokenKind::Word ||
        !EqualsNoCase(tokens_[pos_].In(text_), keyword)) {
      return false;
    }
    ++pos_;
    return true;
  }
  // A [name], a word, or a run of digits and letters; empty when none stands here.
  String Identifier() {
    SkipBlanks();
    if (pos_ >= tokens_.size()) return {};
    const db::SqlToken& token = tokens_[pos_];
    const StringView text = token.In(text_);
    const bool plain =
        token.kind == db::TokenKind::Word ||
        (token.kind == db::TokenKind::Number && text.find_first_of(u".+-") == StringView::npos);
    if (!plain && token.kind != db::TokenKind::QuotedName) return {};
    ++pos_;
    return String(token.ValueIn(text_));
  }
  // A quoted text, a number, True or False; nullopt when none stands here.
  std::optional<Variant> Literal() {
    SkipBlanks();
    if (pos_ >= tokens_.size()) return std::nullopt;
    if (tokens_[pos_].kind == db::TokenKind::Literal) {
      return Variant(db::Unquoted(text_, tokens_[pos_++]));
    }
    if (AcceptKeyword(u"True")) return Variant(true);
    if (AcceptKeyword(u"False")) return Variant(false);
    // A number with its sign: the tokens written together that the number
    // conversion may read (words and numbers, dots and signs).
    const size_t start = tokens_[pos_].begin;
    size_t end = start;
    while (pos_ < tokens_.size() && tokens_[pos_].begin == end && PartOfNumber(tokens_[pos_])) {
      end = tokens_[pos_++].end;
    }
    double number = 0;
    if (start == end || !TryParseNumber(text_.substr(start, end - start), number)) {
      return std::nullopt;
    }
    return Variant(number);
  }

 private:
  void SkipBlanks() {
    while (pos_ < tokens_.size() && tokens_[pos_].kind == db::TokenKind::Blanks)
      ++pos_;
  }
  bool PartOfNumber(const db::SqlToken& token) const {
    if (token.kind == db::TokenKind::Word || token.kind == db::TokenKind::Number) return true;
    const StringView text = token.In(text_);
    return token.kind == db::TokenKind::Operator && (text == u"." || text == u"-" || text == u"+");
  }

  StringView text_;
  std::vector<db::SqlToken> tokens_;
  size_t pos_ = 0;
  bool readable_ = true;
};

}  // namespace

std::vector<Comparison> ParseCriteria(StringView criteria) {
  Reader reader(criteria);
  if (!reader.Readable()) SyntaxError(criteria);
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
