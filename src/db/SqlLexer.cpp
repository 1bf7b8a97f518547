#include "db/SqlLexer.h"

namespace kavrin::db {

namespace {

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

bool IsLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c >= 0x80;
}

bool IsHexDigit(char16_t c) {
  return IsDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

// Operators read as one token; any other character is an operator of its own.
constexpr StringView kTwoCharacterOperators[] = {u"<>", u"<=", u">=", u"!=", u"==", u"||",
                                                 u"::", u"=>", u"<<", u">>", u"->"};

}  // namespace

bool SqlLexer::IsWordStart(char16_t c) const {
  return IsLetter(c) || profile_.word_start_extra.find(c) != StringView::npos;
}

bool SqlLexer::IsWordPart(char16_t c) const {
  return IsLetter(c) || IsDigit(c) || profile_.word_part_extra.find(c) != StringView::npos;
}

bool SqlLexer::IsBlank(char16_t c) const {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\f' ||
         (c == u'\v' && profile_.vertical_tab_blank);
}

bool SqlLexer::Next(SqlToken& token) {
  if (at_ >= sql_.size()) return false;
  token = SqlToken{};
  token.begin = at_;
  const char16_t c = sql_[at_];
  const char16_t next = at_ + 1 < sql_.size() ? sql_[at_ + 1] : u'\0';
  const auto single = [&](TokenKind kind) {
    token.kind = kind;
    ++at_;
  };
  if (IsBlank(c)) {
    token.kind = TokenKind::Blanks;
    while (at_ < sql_.size() && IsBlank(sql_[at_]))
      ++at_;
  } else if (profile_.comments && (StartsHere(u"--") || StartsHere(u"/*"))) {
    Comment(token);
  } else if (c == u'\'') {
    token.literal = LiteralKind::Text;
    Quoted(token, 1, u'\'', true, false);
  } else if (next == u'\'' && ((profile_.national_texts && (c == u'N' || c == u'n')) ||
                               (profile_.escape_texts && (c == u'E' || c == u'e')) ||
                               (profile_.hex_blobs && (c == u'X' || c == u'x')))) {
    const bool national = c == u'N' || c == u'n', escaped = c == u'E' || c == u'e';
    token.literal = national  ? LiteralKind::National
                    : escaped ? LiteralKind::Escaped
                              : LiteralKind::Blob;
    Quoted(token, 2, u'\'', true, escaped);
  } else if ((c == u'"' && profile_.double_quote_names) || (c == u'`' && profile_.backtick_names)) {
    token.kind = TokenKind::QuotedName;
    Quoted(token, 1, c, true, false);
  } else if (c == u'[' && profile_.bracket_names) {
    token.kind = TokenKind::QuotedName;
    Quoted(token, 1, u']', profile_.bracket_doubling, false);
  } else if (c == u'$' && profile_.dollar_quotes && Dollar(token)) {
    // a dollar-quoted text or a $1 parameter
  } else if (IsDigit(c) || (c == u'.' && IsDigit(next))) {
    Number(token);
  } else if (IsWordStart(c)) {
    token.kind = TokenKind::Word;
    while (at_ < sql_.size() && IsWordPart(sql_[at_]))
      ++at_;
  } else if (c == u'?' || (profile_.named_parameters && (c == u':' || c == u'@' || c == u'$') &&
                           IsWordPart(next))) {
    single(TokenKind::Parameter);
    while (at_ < sql_.size() && (c == u'?' ? IsDigit(sql_[at_]) : IsWordPart(sql_[at_])))
      ++at_;
  } else if (c == u';') {
    single(TokenKind::Semicolon);
  } else {
    Operator(token);
  }
  token.end = at_;
  if (token.kind != TokenKind::Literal && token.kind != TokenKind::QuotedName) {
    token.value_begin = token.begin;
    token.value_end = token.end;
  }
  return true;
}

// -- to the end of the line (the line break is a blank of its own), or a
// block comment, nested where the server nests them.
void SqlLexer::Comment(SqlToken& token) {
  token.kind = TokenKind::Comment;
  if (StartsHere(u"--")) {
    const size_t end = sql_.find(u'\n', at_);
    at_ = end == StringView::npos ? sql_.size() : end;
    return;
  }
  int depth = 0;
  while (at_ < sql_.size()) {
    if (StartsHere(u"/*") && (depth == 0 || profile_.nested_comments)) {
      ++depth;
      at_ += 2;
    } else if (StartsHere(u"*/")) {
      at_ += 2;
      if (--depth == 0) return;
    } else {
      ++at_;
    }
  }
  token.terminated = false;
}

// From an opening mark of `open_length` characters at at_ to just past the
// closing `close`; with `doubling`, a doubled closing character stands for
// itself, with `escapes` a backslash takes the next character along.
void SqlLexer::Quoted(SqlToken& token, size_t open_length, char16_t close, bool doubling,
                      bool escapes) {
  if (token.literal != LiteralKind::None) token.kind = TokenKind::Literal;
  at_ += open_length;
  token.value_begin = at_;
  while (at_ < sql_.size()) {
    const char16_t c = sql_[at_++];
    if (escapes && c == u'\\') {
      if (at_ < sql_.size()) ++at_;
    } else if (c == close) {
      if (doubling && at_ < sql_.size() && sql_[at_] == close) {
        ++at_;
      } else {
        token.value_end = at_ - 1;
        return;
      }
    }
  }
  token.value_end = at_;
  token.terminated = false;
}

// $tag$ ... $tag$ with an empty tag or a word one, or $1; false (nothing
// read) when the $ at at_ starts neither.
bool SqlLexer::Dollar(SqlToken& token) {
  size_t end = at_ + 1;
  if (end < sql_.size() && IsDigit(sql_[end])) {
    token.kind = TokenKind::Parameter;
    while (end < sql_.size() && IsDigit(sql_[end]))
      ++end;
    at_ = end;
    return true;
  }
  if (end < sql_.size() && IsLetter(sql_[end])) {
    while (end < sql_.size() && (IsLetter(sql_[end]) || IsDigit(sql_[end])))
      ++end;
  }
  if (end >= sql_.size() || sql_[end] != u'$') return false;
  const StringView tag = sql_.substr(at_, end + 1 - at_);
  token.kind = TokenKind::Literal;
  token.literal = LiteralKind::Dollar;
  token.value_begin = end + 1;
  const size_t close = sql_.find(tag, token.value_begin);
  token.terminated = close != StringView::npos;
  token.value_end = token.terminated ? close : sql_.size();
  at_ = token.terminated ? close + tag.size() : sql_.size();
  return true;
}

// 12, 1.5, .5, 1.5e3, 1e-3, 0x1F. Word characters right after a number
// belong to it, as the servers read "1abc": one token, not a number.
void SqlLexer::Number(SqlToken& token) {
  token.kind = TokenKind::Number;
  const auto digits = [&] {
    while (at_ < sql_.size() && IsDigit(sql_[at_]))
      ++at_;
  };
  if (profile_.hex_numbers && StartsHere(u"0x")) {
    at_ += 2;
    while (at_ < sql_.size() && IsHexDigit(sql_[at_]))
      ++at_;
  } else {
    digits();
    if (at_ < sql_.size() && sql_[at_] == u'.') {
      ++at_;
      digits();
    }
    if (at_ < sql_.size() && (sql_[at_] == u'e' || sql_[at_] == u'E')) {
      size_t exponent = at_ + 1;
      if (exponent < sql_.size() && (sql_[exponent] == u'+' || sql_[exponent] == u'-')) ++exponent;
      if (exponent < sql_.size() && IsDigit(sql_[exponent])) {
        at_ = exponent;
        digits();
      }
    }
  }
  while (at_ < sql_.size() && IsWordPart(sql_[at_]))
    ++at_;
}

void SqlLexer::Operator(SqlToken& token) {
  token.kind = TokenKind::Operator;
  for (StringView op : kTwoCharacterOperators) {
    if (StartsHere(op)) {
      at_ += op.size();
      return;
    }
  }
  ++at_;
}

std::vector<SqlToken> Tokenize(StringView sql, const SqlProfile& profile) {
  std::vector<SqlToken> tokens;
  SqlLexer lexer(sql, profile);
  SqlToken token;
  while (lexer.Next(token))
    tokens.push_back(token);
  return tokens;
}

std::vector<StringView> SplitStatements(StringView sql, const SqlProfile& profile) {
  std::vector<StringView> statements;
  SqlLexer lexer(sql, profile);
  SqlToken token;
  size_t begin = 0, end = 0;
  bool any = false;
  const auto close = [&] {
    if (any) statements.push_back(sql.substr(begin, end - begin));
    any = false;
  };
  while (lexer.Next(token)) {
    if (token.kind == TokenKind::Semicolon) {
      close();
    } else if (token.Significant()) {
      if (!any) begin = token.begin;
      end = token.end;
      any = true;
    }
  }
  close();
  return statements;
}

StringView LeadingWord(StringView statement, const SqlProfile& profile) {
  SqlLexer lexer(statement, profile);
  SqlToken token;
  while (lexer.Next(token)) {
    if (!token.Significant()) continue;
    if (token.kind == TokenKind::Operator && token.In(statement) == u"(") continue;
    if (token.kind == TokenKind::Word) return token.In(statement);
    break;
  }
  return {};
}

std::vector<StringView> Words(StringView sql, const SqlProfile& profile) {
  std::vector<StringView> words;
  SqlLexer lexer(sql, profile);
  SqlToken token;
  while (lexer.Next(token)) {
    if (token.kind == TokenKind::Word) words.push_back(token.In(sql));
  }
  return words;
}

String Unquoted(StringView sql, const SqlToken& token) {
  const StringView value = token.ValueIn(sql);
  if (token.value_begin == token.begin || token.literal == LiteralKind::Dollar) {
    return String(value);
  }
  char16_t close = sql[token.value_begin - 1];
  if (close == u'[') close = u']';
  String out;
  out.reserve(value.size());
  for (size_t i = 0; i < value.size(); ++i) {
    out.push_back(value[i]);
    if (value[i] == close && i + 1 < value.size() && value[i + 1] == close) ++i;
  }
  return out;
}

}  // namespace kavrin::db
