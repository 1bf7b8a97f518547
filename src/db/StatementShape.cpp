#include "db/StatementShape.h"

#include <string_view>

namespace kavrin::db {

namespace {

enum class Kind { Word, Number, Text, Name, Operator, Open, Close, Comma, Dot };

struct Token {
  Kind kind;
  size_t begin;
  size_t end;
};

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

bool IsPlainWordPart(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c >= 0x80 ||
         IsDigit(c);
}

bool IsNumberPart(char16_t c) {
  return IsPlainWordPart(c) || c == u'.' || c == u'+' || c == u'-';
}

bool IsOperatorChar(char16_t c) {
  return std::u16string_view(u"=<>!+-*/%|").find(c) != std::u16string_view::npos;
}

bool AllOf(StringView text, bool (*test)(char16_t)) {
  for (char16_t c : text) {
    if (!test(c)) return false;
  }
  return true;
}

// One token of the lexer as this reading sees it, or nothing when the text
// holds what this reading does not know for certain: comments, semicolons,
// parameter marks, an unterminated quote, literals other than plain 'texts',
// names quoted in ways only some servers know, words with characters beyond
// letters, digits and '_', a vertical tab, a NUL.
std::optional<Kind> KindOf(const SqlToken& token, StringView sql) {
  if (!token.terminated) return std::nullopt;
  const StringView text = token.In(sql);
  switch (token.kind) {
    case TokenKind::Word:
      if (!AllOf(text, IsPlainWordPart)) return std::nullopt;
      return Kind::Word;
    case TokenKind::Number:
      if (!AllOf(text, IsNumberPart)) return std::nullopt;
      return Kind::Number;
    case TokenKind::Literal:
      if (token.literal != LiteralKind::Text) return std::nullopt;
      return Kind::Text;
    case TokenKind::QuotedName:
      if (text.front() == u'`') return std::nullopt;
      // [a]]b] is one name only where brackets double.
      if (text.front() == u'[' && token.ValueIn(sql).find(u']') != StringView::npos)
        return std::nullopt;
      return Kind::Name;
    case TokenKind::Operator:
      if (text == u"(") return Kind::Open;
      if (text == u")") return Kind::Close;
      if (text == u",") return Kind::Comma;
      if (text == u".") return Kind::Dot;
      if (!AllOf(text, IsOperatorChar)) return std::nullopt;
      return Kind::Operator;
    default:
      return std::nullopt;
  }
}

// The tokens of `sql` read by the server's lexer: blanks dropped, a run of
// operator characters taken as one operator ("<=>" is not "<=" then ">"), and
// a number the lexer starts with its dot (".5") read as a dot and a number,
// and dots, digits and letters right after a number taken into it ("1.2.3",
// "1e5.", "1.a": one token, not a number).
std::optional<std::vector<Token>> Tokens(StringView sql, const SqlProfile& quoting) {
  std::vector<Token> tokens;
  SqlLexer lexer(sql, quoting);
  SqlToken token;
  while (lexer.Next(token)) {
    if (token.kind == TokenKind::Blanks) {
      if (token.In(sql).find(u'\v') != StringView::npos) return std::nullopt;
      continue;
    }
    auto kind = KindOf(token, sql);
    if (!kind) return std::nullopt;
    size_t begin = token.begin;
    if ((*kind == Kind::Number || *kind == Kind::Dot || *kind == Kind::Word) && !tokens.empty() &&
        tokens.back().kind == Kind::Number && tokens.back().end == begin) {
      tokens.back().end = token.end;
      continue;
    }
    if (*kind == Kind::Number && sql[begin] == u'.') {
      tokens.push_back({Kind::Dot, begin, begin + 1});
      ++begin;
    }
    if (*kind == Kind::Operator && !tokens.empty() && tokens.back().kind == Kind::Operator &&
        tokens.back().end == begin) {
      tokens.back().end = token.end;
      continue;
    }
    // A literal touching a word, a number or another literal is a form this
    // reading does not know (E'..', X'..', N'..', '..''..' split oddly).
    if (!tokens.empty() && tokens.back().end == begin) {
      const Kind before = tokens.back().kind;
      const bool literal_pair = *kind == Kind::Text || before == Kind::Text;
      const bool wordlike = before == Kind::Word || before == Kind::Number ||
                            before == Kind::Name || *kind == Kind::Word || *kind == Kind::Number ||
                            *kind == Kind::Name;
      if (literal_pair && wordlike) return std::nullopt;
    }
    // Two literals in a row are one on some servers.
    if (*kind == Kind::Text && !tokens.empty() && tokens.back().kind == Kind::Text)
      return std::nullopt;
    tokens.push_back({*kind, begin, token.end});
  }
  return tokens;
}

bool Is(StringView word, std::initializer_list<StringView> any) {
  for (StringView w : any) {
    if (EqualsNoCase(word, w)) return true;
  }
  return false;
}

// The function name a call token stands for, its quotes removed.
StringView CallName(StringView token, Kind kind) {
  if (kind == Kind::Name && token.size() >= 2) return token.substr(1, token.size() - 2);
  return token;
}

// Functions whose arguments read a bound value as they read a literal.
bool TakesBoundArguments(StringView name) {
  return Is(name, {u"substring", u"len", u"left", u"right"});
}

// Where a parenthesis opened: a condition's own parentheses (or a subquery
// in a condition), the arguments of a call, or somewhere values stay put.
struct Frame {
  bool bindable = false;   // literals here may be bound at all
  bool condition = false;  // inside WHERE, ON or HAVING of this level
  bool arguments = false;  // the arguments of a call that takes bound values
};

// Words that start a clause: after them, until WHERE, ON or HAVING, values
// stay in the shape.
bool IsClauseWord(StringView word) {
  return Is(word, {u"select", u"from",   u"order",     u"group",    u"limit", u"offset",
                   u"union",  u"except", u"intersect", u"join",     u"inner", u"left",
                   u"right",  u"cross",  u"natural",   u"full",     u"outer", u"window",
                   u"values", u"using",  u"with",      u"returning"});
}

// Words before a parenthesis that does not hold a call's arguments.
bool IsKeyword(StringView word) {
  return IsClauseWord(word) ||
         Is(word, {u"where", u"on", u"having", u"in", u"exists", u"and", u"or", u"not", u"as",
                   u"by", u"when", u"then", u"else", u"case", u"between", u"like", u"is"});
}

// Keywords that are also functions when a parenthesis follows.
bool IsCallable(StringView word) {
  return Is(word, {u"left", u"right"});
}

bool IsComparison(StringView op) {
  return op == u"=" || op == u"<>" || op == u"!=" || op == u"<" || op == u">" || op == u"<=" ||
         op == u">=";
}

// A word after which a compared value ends its comparison.
bool EndsComparison(StringView word) {
  return Is(word, {u"and", u"or", u"order", u"group", u"having", u"limit", u"union", u"except",
                   u"intersect", u"join", u"inner", u"left", u"right", u"cross", u"natural",
                   u"full", u"where"});
}

// The text of a literal 'it''s' without its quotes, nullopt when it holds a
// unit that engines may turn into another when stored (a NUL, a lone
// surrogate, U+FFFE, U+FFFF): those stay in the shape.
std::optional<String> LiteralText(StringView token) {
  String text;
  text.reserve(token.size());
  for (size_t i = 1; i + 1 < token.size(); ++i) {
    const char16_t c = token[i];
    if (c == 0 || (c >= 0xD800 && c <= 0xDFFF) || c >= 0xFFFE) return std::nullopt;
    text.push_back(c);
    if (c == u'\'') ++i;  // the doubled quote
  }
  return text;
}

std::optional<int64_t> WholeNumber(StringView token) {
  if (token.empty() || token.size() > 18) return std::nullopt;
  int64_t value = 0;
  for (char16_t c : token) {
    if (!IsDigit(c)) return std::nullopt;
    value = value * 10 + (c - u'0');
  }
  return value;
}

}  // namespace

std::optional<StatementShape> ShapeOf(StringView sql, const SqlProfile& quoting) {
  auto tokens = Tokens(sql, quoting);
  if (!tokens || tokens->empty()) return std::nullopt;
  const auto text_of = [&](const Token& t) { return sql.substr(t.begin, t.end - t.begin); };
  if (tokens->front().kind != Kind::Word || !EqualsNoCase(text_of(tokens->front()), u"select"))
    return std::nullopt;

  StatementShape shape;
  shape.text.reserve(sql.size());
  std::vector<Frame> frames{Frame{true, false, false}};
  size_t copied = 0;
  for (size_t i = 0; i < tokens->size(); ++i) {
    const Token& t = (*tokens)[i];
    const Token* prev = i > 0 ? &(*tokens)[i - 1] : nullptr;
    const Token* next = i + 1 < tokens->size() ? &(*tokens)[i + 1] : nullptr;
    Frame& frame = frames.back();
    const bool next_is_open = next && next->kind == Kind::Open;
    switch (t.kind) {
      case Kind::Word: {
        const StringView word = text_of(t);
        if (Is(word, {u"where", u"on", u"having"})) {
          frame.condition = true;
        } else if (IsClauseWord(word) && !(next_is_open && IsCallable(word))) {
          frame.condition = false;
        }
        break;
      }
      case Kind::Open: {
        const bool in_condition = frame.bindable && frame.condition;
        Frame opened;
        const bool call = prev && (prev->kind == Kind::Name ||
                                   (prev->kind == Kind::Word &&
                                    (!IsKeyword(text_of(*prev)) || IsCallable(text_of(*prev)))));
        if (call) {
          opened.arguments = TakesBoundArguments(CallName(text_of(*prev), prev->kind));
          opened.bindable = in_condition && opened.arguments;
        } else {
          opened.bindable = in_condition;
          opened.condition = in_condition;
        }
        frames.push_back(opened);
        break;
      }
      case Kind::Close:
        if (frames.size() == 1) return std::nullopt;
        frames.pop_back();
        break;
      case Kind::Text:
      case Kind::Number: {
        if (!frame.bindable || !prev) break;
        const bool compared = frame.condition && prev->kind == Kind::Operator &&
                              IsComparison(text_of(*prev)) &&
                              (!next || next->kind == Kind::Close ||
                               (next->kind == Kind::Word && EndsComparison(text_of(*next))));
        const bool argument = frame.arguments &&
                              (prev->kind == Kind::Open || prev->kind == Kind::Comma) && next &&
                              (next->kind == Kind::Comma || next->kind == Kind::Close);
        if (!compared && !argument) break;
        std::variant<String, int64_t> value;
        if (t.kind == Kind::Text) {
          auto literal = LiteralText(text_of(t));
          if (!literal) break;
          value = std::move(*literal);
        } else {
          auto number = WholeNumber(text_of(t));
          if (!number) break;
          value = *number;
        }
        shape.text.append(sql.substr(copied, t.begin - copied));
        shape.marks.push_back(shape.text.size());
        shape.text.push_back(u'?');
        copied = t.end;
        shape.values.push_back(std::move(value));
        break;
      }
      default:
        break;
    }
  }
  if (frames.size() != 1) return std::nullopt;
  shape.text.append(sql.substr(copied));
  return shape;
}

}  // namespace kavrin::db
