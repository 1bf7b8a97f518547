#include "db/SqlText.h"

namespace kavrin::db {

namespace {

bool IsWordStart(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c >= 0x80;
}

bool IsWordPart(char16_t c) {
  return IsWordStart(c) || (c >= u'0' && c <= u'9') || c == u'$' || c == u'@' || c == u'#';
}

bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\f' || c == u'\v';
}

enum class Kind { Word, Semicolon, OpenParen, Other };

struct Lexeme {
  Kind kind;
  size_t begin;
  size_t end;
};

// Hands out the lexemes of a text one by one, skipping blanks and comments.
// An unterminated literal, name or comment runs to the end of the text.
class Lexer {
 public:
  Lexer(StringView sql, const SqlQuoting& quoting) : sql_(sql), quoting_(quoting) {}

  bool Next(Lexeme& out) {
    SkipBlanksAndComments();
    if (at_ >= sql_.size()) return false;
    const size_t begin = at_;
    const char16_t c = sql_[at_];
    Kind kind = Kind::Other;
    if (IsWordStart(c)) {
      while (at_ < sql_.size() && IsWordPart(sql_[at_]))
        ++at_;
      const bool escape_prefix = at_ - begin == 1 && (c == u'E' || c == u'e');
      if (escape_prefix && quoting_.escape_strings && at_ < sql_.size() && sql_[at_] == u'\'') {
        SkipQuoted(u'\'', true);
      } else {
        kind = Kind::Word;
      }
    } else if (c >= u'0' && c <= u'9') {
      while (at_ < sql_.size() && (IsWordPart(sql_[at_]) || sql_[at_] == u'.'))
        ++at_;
    } else if (c == u'\'' || c == u'"') {
      SkipQuoted(c, false);
    } else if (c == u'[' && quoting_.brackets) {
      SkipQuoted(u']', false);
    } else if (c == u'$' && quoting_.dollar_quotes && SkipDollarQuoted()) {
      // skipped
    } else {
      ++at_;
      if (c == u';') kind = Kind::Semicolon;
      if (c == u'(') kind = Kind::OpenParen;
    }
    out = {kind, begin, at_};
    return true;
  }

 private:
  void SkipBlanksAndComments() {
    while (at_ < sql_.size()) {
      if (IsBlank(sql_[at_])) {
        ++at_;
      } else if (StartsHere(u"--")) {
        const size_t end = sql_.find(u'\n', at_);
        at_ = end == StringView::npos ? sql_.size() : end + 1;
      } else if (StartsHere(u"/*")) {
        SkipBlockComment();
      } else {
        return;
      }
    }
  }

  bool StartsHere(StringView what) const { return sql_.substr(at_, what.size()) == what; }

  // Block comments nest, as both servers read them.
  void SkipBlockComment() {
    int depth = 0;
    while (at_ < sql_.size()) {
      if (StartsHere(u"/*")) {
        ++depth;
        at_ += 2;
      } else if (StartsHere(u"*/")) {
        at_ += 2;
        if (--depth == 0) return;
      } else {
        ++at_;
      }
    }
  }

  // From an opening quote (or bracket) at at_ to just past its closing
  // `close`; a doubled closing character stands for itself.
  void SkipQuoted(char16_t close, bool backslash_escapes) {
    ++at_;
    while (at_ < sql_.size()) {
      const char16_t c = sql_[at_++];
      if (backslash_escapes && c == u'\\') {
        if (at_ < sql_.size()) ++at_;
      } else if (c == close) {
        if (at_ < sql_.size() && sql_[at_] == close) {
          ++at_;
        } else {
          return;
        }
      }
    }
  }

  // $tag$ ... $tag$ with an empty or word tag; false (nothing skipped) when
  // the $ at at_ opens no such quote.
  bool SkipDollarQuoted() {
    size_t end = at_ + 1;
    if (end < sql_.size() && IsWordStart(sql_[end])) {
      while (end < sql_.size() && IsWordPart(sql_[end]) && sql_[end] != u'$')
        ++end;
    }
    if (end >= sql_.size() || sql_[end] != u'$') return false;
    const StringView tag = sql_.substr(at_, end + 1 - at_);
    const size_t close = sql_.find(tag, end + 1);
    at_ = close == StringView::npos ? sql_.size() : close + tag.size();
    return true;
  }

  StringView sql_;
  SqlQuoting quoting_;
  size_t at_ = 0;
};

}  // namespace

std::vector<StringView> SplitStatements(StringView sql, const SqlQuoting& quoting) {
  std::vector<StringView> statements;
  Lexer lexer(sql, quoting);
  Lexeme lexeme{};
  size_t begin = 0;
  size_t end = 0;
  bool any = false;
  while (lexer.Next(lexeme)) {
    if (lexeme.kind == Kind::Semicolon) {
      if (any) statements.push_back(sql.substr(begin, end - begin));
      any = false;
      continue;
    }
    if (!any) begin = lexeme.begin;
    end = lexeme.end;
    any = true;
  }
  if (any) statements.push_back(sql.substr(begin, end - begin));
  return statements;
}

StringView LeadingWord(StringView statement, const SqlQuoting& quoting) {
  Lexer lexer(statement, quoting);
  Lexeme lexeme{};
  while (lexer.Next(lexeme)) {
    if (lexeme.kind == Kind::OpenParen) continue;
    if (lexeme.kind != Kind::Word) break;
    return statement.substr(lexeme.begin, lexeme.end - lexeme.begin);
  }
  return {};
}

std::vector<StringView> Words(StringView sql, const SqlQuoting& quoting) {
  std::vector<StringView> words;
  Lexer lexer(sql, quoting);
  Lexeme lexeme{};
  while (lexer.Next(lexeme)) {
    if (lexeme.kind == Kind::Word)
      words.push_back(sql.substr(lexeme.begin, lexeme.end - lexeme.begin));
  }
  return words;
}

}  // namespace kavrin::db
