#include "db/sqlite/Dialect.h"

#include <sqlite3.h>

#include <algorithm>

#include "db/Collation.h"
#include "db/SqlLexer.h"

namespace kavrin::db::sqlite {

namespace {

// ---- functions ----

const char16_t* Text16(sqlite3_value* v, int* units) {
  const void* p = sqlite3_value_text16(v);
  *units = sqlite3_value_bytes16(v) / 2;
  return static_cast<const char16_t*>(p);
}

bool AnyNull(int argc, sqlite3_value** argv) {
  return std::any_of(argv, argv + argc,
                     [](sqlite3_value* v) { return sqlite3_value_type(v) == SQLITE_NULL; });
}

void ResultText(sqlite3_context* ctx, StringView text) {
  sqlite3_result_text16(ctx, text.data(), static_cast<int>(text.size() * 2), SQLITE_TRANSIENT);
}

// len(s): characters without the trailing blanks.
void Len(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  int units = 0;
  const char16_t* text = Text16(argv[0], &units);
  sqlite3_result_int64(
      ctx, static_cast<sqlite3_int64>(LengthIgnoringTrailingBlanks(StringView(text, units))));
}

// left(s, n) and right(s, n): the first or last n characters; n past the
// length gives the whole text; a negative n is an error.
template <bool kFromRight>
void Side(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  const sqlite3_int64 n = sqlite3_value_int64(argv[1]);
  if (n < 0) {
    return sqlite3_result_error(ctx,
                                kFromRight
                                    ? "Invalid length parameter passed to the right function."
                                    : "Invalid length parameter passed to the left function.",
                                -1);
  }
  int units = 0;
  const char16_t* text = Text16(argv[0], &units);
  const StringView whole(text, units);
  const size_t take = std::min<size_t>(whole.size(), static_cast<size_t>(n));
  ResultText(ctx, kFromRight ? whole.substr(whole.size() - take) : whole.substr(0, take));
}

// substring(s, start, length), 1-based: a start before 1 shortens the part
// taken, a start past the end gives '', a negative length is an error.
void Substring(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  const sqlite3_int64 start = sqlite3_value_int64(argv[1]);
  const sqlite3_int64 length = sqlite3_value_int64(argv[2]);
  if (length < 0) {
    return sqlite3_result_error(ctx, "Invalid length parameter passed to the substring function.",
                                -1);
  }
  int units = 0;
  const char16_t* text = Text16(argv[0], &units);
  const sqlite3_int64 first = std::max<sqlite3_int64>(start, 1);
  const sqlite3_int64 end_bound = sqlite3_int64{units} + 1;
  const sqlite3_int64 last = (start > end_bound - length) ? end_bound : start + length;
  if (last <= first) return ResultText(ctx, u"");
  ResultText(ctx, StringView(text + first - 1, static_cast<size_t>(last - first)));
}

// ---- collations ----

int CompareWith(void* arg, int na, const void* a, int nb, const void* b) {
  const auto* collation = static_cast<const Collation*>(arg);
  return collation->Compare(StringView(static_cast<const char16_t*>(a), na / 2),
                            StringView(static_cast<const char16_t*>(b), nb / 2));
}

// The bits a UTF-8 lead byte from 0xC0 up contributes, as SQLite reads it.
constexpr unsigned char kLeadBits[64] = {
    0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f,
    0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1a, 0x1b, 0x1c, 0x1d, 0x1e, 0x1f,
    0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f,
    0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x00, 0x01, 0x02, 0x03, 0x00, 0x01, 0x00, 0x00,
};

// The next character of a stored UTF-8 text, exactly as it reaches the UTF-16
// comparison when SQLite turns the text into UTF-16 first: a lead byte takes
// every continuation byte that follows, a sequence that is overlong, a
// surrogate or a non-character reads as U+FFFD, a stray continuation byte as
// the character of its own value, and a value past U+FFFF as the surrogate
// pair SQLite writes for it reads back.
char32_t NextStoredCharacter(const unsigned char*& p, const unsigned char* end) {
  uint32_t c = *p++;
  if (c >= 0xC0) {
    c = kLeadBits[c - 0xC0];
    while (p != end && (*p & 0xC0) == 0x80)
      c = (c << 6) + (0x3F & *p++);
    if (c < 0x80 || (c & 0xFFFFF800) == 0xD800 || (c & 0xFFFFFFFE) == 0xFFFE) c = 0xFFFD;
  }
  if (c > 0xFFFF) c = 0x10000 + ((c - 0x10000) & 0xFFFFF);
  return c;
}

// The same comparison as CompareWith, on texts as a UTF-8 database stores
// them, without turning them into UTF-16 first. A blank (0x20) is a character
// of its own in either form, so trailing blanks are dropped as bytes.
int CompareStoredWith(void* arg, int na, const void* a, int nb, const void* b) {
  const auto* collation = static_cast<const Collation*>(arg);
  const auto* pa = static_cast<const unsigned char*>(a);
  const auto* pb = static_cast<const unsigned char*>(b);
  const unsigned char* ea = pa + na;
  const unsigned char* eb = pb + nb;
  while (ea > pa && ea[-1] == ' ')
    --ea;
  while (eb > pb && eb[-1] == ' ')
    --eb;
  while (pa < ea && pb < eb) {
    const char32_t ka = collation->Key(NextStoredCharacter(pa, ea));
    const char32_t kb = collation->Key(NextStoredCharacter(pb, eb));
    if (ka != kb) return ka < kb ? -1 : 1;
  }
  if (pa < ea) return 1;
  if (pb < eb) return -1;
  return 0;
}

void DestroyCollation(void* arg) {
  delete static_cast<Collation*>(arg);
}

void OnCollationNeeded(void*, sqlite3* db, int, const void* name16) {
  const auto* name = static_cast<const char16_t*>(name16);
  // Both forms: SQLite compares with the one its database's text is kept in.
  if (auto collation = CollationFromName(name)) {
    const std::string utf8_name = ToUtf8(name);
    sqlite3_create_collation_v2(db, utf8_name.c_str(), SQLITE_UTF16, new Collation(*collation),
                                CompareWith, DestroyCollation);
    sqlite3_create_collation_v2(db, utf8_name.c_str(), SQLITE_UTF8, new Collation(*collation),
                                CompareStoredWith, DestroyCollation);
  }
}

}  // namespace

String StoredTextAsUtf16(std::string_view utf8) {
  String text;
  text.reserve(utf8.size());
  const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
  const auto* end = p + utf8.size();
  while (p < end) {
    const char32_t c = NextStoredCharacter(p, end);
    if (c <= 0xFFFF) {
      text.push_back(static_cast<char16_t>(c));
    } else {
      text.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
  }
  return text;
}

String QuoteCallKeywords(StringView sql) {
  const std::vector<SqlToken> tokens = Tokenize(sql, kSqliteProfile);
  String out;
  out.reserve(sql.size() + 8);
  for (size_t i = 0; i < tokens.size(); ++i) {
    const StringView text = tokens[i].In(sql);
    bool call = false;
    if (tokens[i].kind == TokenKind::Word &&
        (EqualsNoCase(text, u"right") || EqualsNoCase(text, u"left"))) {
      size_t next = i + 1;
      while (next < tokens.size() && !tokens[next].Significant())
        ++next;
      call = next < tokens.size() && tokens[next].kind == TokenKind::Operator &&
             tokens[next].In(sql) == u"(";
    }
    if (call) {
      out.append(u"\"").append(text).append(u"\"");
    } else {
      out.append(text);
    }
  }
  return out;
}

int RegisterDialect(sqlite3* db) {
  constexpr int kFlags = SQLITE_UTF16 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  struct Function {
    const char* name;
    int args;
    void (*fn)(sqlite3_context*, int, sqlite3_value**);
  };
  const Function functions[] = {
      {"len", 1, Len},
      {"left", 2, Side<false>},
      {"right", 2, Side<true>},
      {"substring", 3, Substring},
  };
  for (const auto& f : functions) {
    const int rc = sqlite3_create_function_v2(db, f.name, f.args, kFlags, nullptr, f.fn, nullptr,
                                              nullptr, nullptr);
    if (rc != SQLITE_OK) return rc;
  }
  return sqlite3_collation_needed16(db, nullptr, OnCollationNeeded);
}

}  // namespace kavrin::db::sqlite
