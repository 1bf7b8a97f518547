// The SQL lexer on any text. Under every profile its tokens cover the text
// exactly, in order. Under SQLite's it agrees with SQLite itself: a text ends
// a statement (no literal, name or comment left open, a final semicolon) just
// when sqlite3_complete says so, trigger bodies aside; and where SQLite's own
// prepare finds a statement after the first, the lexer sees two. The SQLite
// driver refuses every text the lexer splits into two statements, and a
// text it accepts leaves the database as it was.
#include <sqlite3.h>

#include "FuzzSupport.h"
#include "db/SqlLexer.h"
#include "db/sqlite/Dialect.h"
#include "db/sqlite/SqliteConnection.h"

using namespace kavrin;

namespace {

constexpr const db::SqlProfile* kProfiles[] = {&db::kSqliteProfile, &db::kSqlServerProfile,
                                               &db::kPostgresProfile, &db::kStandardProfile,
                                               &db::kKitProfile};

void CheckCovers(StringView sql, const db::SqlProfile& profile) {
  size_t at = 0;
  for (const db::SqlToken& t : db::Tokenize(sql, profile)) {
    const bool quoted = t.kind == db::TokenKind::Literal || t.kind == db::TokenKind::QuotedName;
    FUZZ_CHECK(t.begin == at && t.end > t.begin && t.begin <= t.value_begin &&
                   t.value_begin <= t.value_end && t.value_end <= t.end &&
                   (!quoted || !t.terminated || (t.begin < t.value_begin && t.value_end < t.end)),
               ToUtf8(sql));
    at = t.end;
  }
  FUZZ_CHECK(at == sql.size(), ToUtf8(sql));
}

// Whether the lexer sees the text end a statement: nothing left open, and a
// semicolon as its last token but blanks and comments.
bool EndsStatement(StringView sql) {
  bool ends = false;
  for (const db::SqlToken& t : db::Tokenize(sql, db::kSqliteProfile)) {
    if (!t.terminated) return false;
    if (t.Significant()) ends = t.kind == db::TokenKind::Semicolon;
  }
  return ends;
}

// sqlite3_complete also follows CREATE TRIGGER bodies, whose semicolons do
// not end the statement.
bool MentionsTrigger(StringView sql) {
  String lower(sql);
  for (char16_t& c : lower) {
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
  }
  return lower.find(u"trigger") != String::npos;
}

// Whether SQLite, having prepared the first statement of `text`, finds
// anything but blanks, comments and semicolons after it.
bool SqliteSeesAnother(sqlite3* db, const String& text) {
  sqlite3_stmt* stmt = nullptr;
  const void* tail = nullptr;
  int rc =
      sqlite3_prepare16_v3(db, text.data(), static_cast<int>(text.size() * 2), 0, &stmt, &tail);
  sqlite3_finalize(stmt);
  if (rc != SQLITE_OK || !tail) return false;
  const size_t offset = static_cast<size_t>(static_cast<const char16_t*>(tail) - text.data());
  if (offset >= text.size()) return false;
  const String rest = text.substr(offset);
  stmt = nullptr;
  rc = sqlite3_prepare16_v3(db, rest.data(), static_cast<int>(rest.size() * 2), 0, &stmt, nullptr);
  const bool another = rc != SQLITE_OK || stmt != nullptr;
  sqlite3_finalize(stmt);
  return another;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::Fixture& fixture = fuzz::Fixture::Get();
  static const std::string bytes = fixture.Bytes();
  // The suite's database as the driver opens it for the component, with a
  // short time limit; and a raw read-only handle on it for SQLite's own view.
  static const auto connection = db::sqlite::OpenFile(fixture.path, false, std::chrono::seconds(1));
  static sqlite3* raw = [] {
    sqlite3* db = nullptr;
    sqlite3_open_v2(fixture.path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    db::sqlite::RegisterDialect(db);
    return db;
  }();

  String sql = fuzz::TextFromBytes(data, size);
  sql.resize(std::min(sql.find(u'\0'), sql.size()));  // SQLite reads a text to its first NUL
  for (const db::SqlProfile* profile : kProfiles)
    CheckCovers(sql, *profile);

  if (!MentionsTrigger(sql)) {
    FUZZ_CHECK(EndsStatement(sql) == (sqlite3_complete(ToUtf8(sql).c_str()) != 0), ToUtf8(sql));
  }
  const size_t statements = db::SplitStatements(sql, db::kSqliteProfile).size();
  FUZZ_CHECK(statements >= 2 || !SqliteSeesAnother(raw, db::sqlite::QuoteCallKeywords(sql)),
             ToUtf8(sql));

  const auto read = fuzz::Try([&] {
    auto cursor = connection->Query(sql);
    for (int row = 0; row < 3 && cursor->Next(); ++row) {
    }
    return true;
  });
  FUZZ_CHECK(!read || statements == 1, ToUtf8(sql));
  if (read)
    FUZZ_CHECK(fixture.Bytes() == bytes && fixture.DirectoryHoldsOnlyTheDatabase(), ToUtf8(sql));
  return 0;
}
