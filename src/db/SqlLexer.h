// Reading an SQL text as a server reads it: one lexer, with the quoting rules
// of each server in a profile. It hands out every piece of the text as a
// typed token with its place, so that callers can tell statements apart, see
// the words, and find the literals with their exact spans.
//
// When in doubt the reading errs towards seeing more: a text is never taken
// for one statement where the server could see two. Nothing here throws; an
// unterminated literal, name or block comment runs to the end of the text.
#pragma once

#include <cstdint>
#include <vector>

#include "kavrin/String.h"

namespace kavrin::db {

// The quoting and word rules of a dialect. Every profile reads 'text' with
// doubled quotes, numbers and the blanks space, tab, CR, LF and FF.
struct SqlProfile {
  bool bracket_names = false;       // [name]
  bool bracket_doubling = false;    // ]] inside [name] stands for ]
  bool double_quote_names = false;  // "name", "" inside standing for "
  bool backtick_names = false;      // `name`
  bool comments = false;            // -- to the end of the line, and /* */
  bool nested_comments = false;     // /* /* */ */ is one comment
  bool national_texts = false;      // N'text'
  bool escape_texts = false;        // E'it\'s': a backslash escapes the next character
  bool dollar_quotes = false;       // $$text$$ and $tag$text$tag$; $1 a parameter
  bool hex_blobs = false;           // X'0A1B'
  bool named_parameters = false;    // :name, @name, $name
  bool hex_numbers = false;         // 0x1F
  bool vertical_tab_blank = false;  // VT is a blank too
  // Characters beyond letters, '_' and those from U+0080 up that start a
  // word, and those beyond these and the digits that continue one.
  StringView word_start_extra = {};
  StringView word_part_extra = {};
};

// SQLite: "", `` and [] names (no doubling in brackets), flat comments, blobs.
inline constexpr SqlProfile kSqliteProfile{
    .bracket_names = true,
    .double_quote_names = true,
    .backtick_names = true,
    .comments = true,
    .hex_blobs = true,
    .named_parameters = true,
    .hex_numbers = true,
    .word_part_extra = u"$",
};

// SQL Server: [names] with ]] doubled, nested comments, N'', @variables and
// #temporary names as words.
inline constexpr SqlProfile kSqlServerProfile{
    .bracket_names = true,
    .bracket_doubling = true,
    .double_quote_names = true,
    .comments = true,
    .nested_comments = true,
    .national_texts = true,
    .hex_numbers = true,
    .vertical_tab_blank = true,
    .word_start_extra = u"@#",
    .word_part_extra = u"$@#",
};

// PostgreSQL: nested comments, N'', E'' with backslash escapes, dollar quotes.
inline constexpr SqlProfile kPostgresProfile{
    .double_quote_names = true,
    .comments = true,
    .nested_comments = true,
    .national_texts = true,
    .escape_texts = true,
    .dollar_quotes = true,
    .hex_blobs = true,
    .vertical_tab_blank = true,
    .word_part_extra = u"$",
};

// Any other server: the standard's "names", nested comments and N''.
inline constexpr SqlProfile kStandardProfile{
    .double_quote_names = true,
    .comments = true,
    .nested_comments = true,
    .national_texts = true,
    .vertical_tab_blank = true,
    .word_part_extra = u"$",
};

// The kit's own expressions (criteria, table names): [names] without
// doubling, 'texts', no comments; $ and # belong to words.
inline constexpr SqlProfile kKitProfile{
    .bracket_names = true,
    .vertical_tab_blank = true,
    .word_start_extra = u"$#",
    .word_part_extra = u"$#",
};

enum class TokenKind : uint8_t {
  Blanks,
  Comment,
  Word,        // a keyword or an unquoted name
  QuotedName,  // "name", [name], `name`
  Literal,     // see LiteralKind
  Number,      // unsigned: a sign before it is an operator of its own
  Parameter,   // ?, ?1, $1, :name, @name, $name
  Operator,    // punctuation and operators, one or two characters
  Semicolon,
};

enum class LiteralKind : uint8_t {
  None,
  Text,      // 'text'
  National,  // N'text'
  Escaped,   // E'text' with backslash escapes
  Dollar,    // $tag$text$tag$
  Blob,      // X'0A1B'
};

struct SqlToken {
  TokenKind kind = TokenKind::Blanks;
  LiteralKind literal = LiteralKind::None;
  // False for a literal, quoted name or block comment that runs to the end
  // of the text without its closing mark.
  bool terminated = true;
  size_t begin = 0, end = 0;  // the token's span in the text, prefix and quotes included
  // For quoted names and literals, the span between the quotes, as written
  // (doubled quotes and escapes not yet read); otherwise the whole token.
  size_t value_begin = 0, value_end = 0;

  StringView In(StringView sql) const { return sql.substr(begin, end - begin); }
  StringView ValueIn(StringView sql) const {
    return sql.substr(value_begin, value_end - value_begin);
  }
  // Neither blanks nor a comment.
  bool Significant() const { return kind != TokenKind::Blanks && kind != TokenKind::Comment; }
};

// Hands out the tokens of a text in order; together they cover it exactly.
// The text must outlive the lexer.
class SqlLexer {
 public:
  SqlLexer(StringView sql, const SqlProfile& profile) : sql_(sql), profile_(profile) {}
  // The next token; false at the end of the text.
  bool Next(SqlToken& token);

 private:
  bool IsWordStart(char16_t c) const;
  bool IsWordPart(char16_t c) const;
  bool IsBlank(char16_t c) const;
  bool StartsHere(StringView what) const { return sql_.substr(at_, what.size()) == what; }
  void Comment(SqlToken& token);
  void Quoted(SqlToken& token, size_t open_length, char16_t close, bool doubling, bool escapes);
  bool Dollar(SqlToken& token);
  void Number(SqlToken& token);
  void Operator(SqlToken& token);

  StringView sql_;
  SqlProfile profile_;
  size_t at_ = 0;
};

// Every token of `sql`.
std::vector<SqlToken> Tokenize(StringView sql, const SqlProfile& profile);

// The statements of `sql`, split at semicolons outside literals, quoted names
// and comments, each from its first token to its last; a piece holding
// nothing but blanks and comments is dropped.
std::vector<StringView> SplitStatements(StringView sql, const SqlProfile& profile);

// The first word of a statement outside comments and opening parentheses
// ("select" for "(select 1)"), empty when it does not start with a word.
StringView LeadingWord(StringView statement, const SqlProfile& profile);

// Every unquoted word of `sql` (names and keywords) in the order written.
std::vector<StringView> Words(StringView sql, const SqlProfile& profile);

// The value of a quoted name or a literal: the text between the quotes with
// each doubled closing quote read as one (a dollar-quoted text as written).
// Backslash escapes of E'' literals are not read.
String Unquoted(StringView sql, const SqlToken& token);

}  // namespace kavrin::db
