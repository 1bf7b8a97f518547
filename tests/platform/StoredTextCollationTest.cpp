// A UTF-8 database compares its texts under a server collation, and the
// driver reads them, without SQLite turning them into UTF-16 first: the
// comparison must order them exactly as the UTF-16 comparison orders SQLite's
// own UTF-16 form of them (an index built by either must serve the other),
// and the texts read must be that UTF-16 form. Ill-formed texts included.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <random>
#include <string>
#include <vector>

#include "db/Collation.h"
#include "db/sqlite/Dialect.h"

namespace kavrin {
namespace {

class Engine {
 public:
  Engine() {
    sqlite3_open(":memory:", &db_);
    db::sqlite::RegisterDialect(db_);
    sqlite3_prepare_v2(db_, "SELECT ?1", -1, &echo_, nullptr);
    sqlite3_prepare_v2(db_,
                       "SELECT (?1 > ?2 COLLATE Chinese_PRC_CI_AS)"
                       " - (?1 < ?2 COLLATE Chinese_PRC_CI_AS),"
                       " (?1 > ?2 COLLATE Latin1_General_CS_AS)"
                       " - (?1 < ?2 COLLATE Latin1_General_CS_AS)",
                       -1, &compare_, nullptr);
  }
  ~Engine() {
    sqlite3_finalize(echo_);
    sqlite3_finalize(compare_);
    sqlite3_close(db_);
  }

  // The UTF-16 form SQLite gives a stored UTF-8 text.
  String AsUtf16(const std::string& stored) {
    sqlite3_bind_text(echo_, 1, stored.data(), static_cast<int>(stored.size()), SQLITE_STATIC);
    sqlite3_step(echo_);
    const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(echo_, 0));
    String utf16(text, static_cast<size_t>(sqlite3_column_bytes16(echo_, 0) / 2));
    sqlite3_reset(echo_);
    return utf16;
  }

  // The signs the database's comparison gives, case-insensitive and -sensitive.
  std::pair<int, int> Compare(const std::string& a, const std::string& b) {
    sqlite3_bind_text(compare_, 1, a.data(), static_cast<int>(a.size()), SQLITE_STATIC);
    sqlite3_bind_text(compare_, 2, b.data(), static_cast<int>(b.size()), SQLITE_STATIC);
    sqlite3_step(compare_);
    const std::pair<int, int> signs{sqlite3_column_int(compare_, 0),
                                    sqlite3_column_int(compare_, 1)};
    sqlite3_reset(compare_);
    return signs;
  }

 private:
  sqlite3* db_ = nullptr;
  sqlite3_stmt* echo_ = nullptr;
  sqlite3_stmt* compare_ = nullptr;
};

int Sign(int value) {
  return (value > 0) - (value < 0);
}

// Well-formed pieces in several cases and widths, and ill-formed ones: stray
// continuation bytes, truncated, overlong and surrogate sequences,
// non-characters, leads of five and six bytes, long continuation runs.
const std::vector<std::string> kPieces = {"a",
                                          "A",
                                          "z",
                                          "Z",
                                          " ",
                                          "0",
                                          "\xC3\xA9",
                                          "\xC3\x89",
                                          "\xE4\xB8\xAD",
                                          "\xEF\xBC\xA1",
                                          "\xEF\xBD\x81",
                                          "\xF0\x9F\x98\x80",
                                          "\xF0\x90\x90\xA8",
                                          "\xF0\x90\x90\x80",
                                          "\x80",
                                          "\xBF",
                                          "\xC0",
                                          "\xC1\x81",
                                          "\xC0\xA0",
                                          "\xE0\x80",
                                          "\xED\xA0\x80",
                                          "\xED\xBF\xBF",
                                          "\xEF\xBF\xBE",
                                          "\xEF\xBF\xBF",
                                          "\xF4\x90\x80\x80",
                                          "\xF8\x88\x80\x80\x80",
                                          "\xFC\x84\x80\x80\x80\x80",
                                          "\xFE",
                                          "\xFF",
                                          "\x80\x80\x80\x80\x80\x80\x80",
                                          "\xE4\xB8",
                                          "\xC3"};

std::string RandomText(std::mt19937& random) {
  std::string text;
  for (int n = static_cast<int>(random() % 6); n > 0; --n)
    text += kPieces[random() % kPieces.size()];
  return text;
}

TEST(StoredTextCollation, TextsReadInUtf16AsSqliteGivesThem) {
  std::mt19937 random(7);
  Engine engine;
  for (int i = 0; i < 20000; ++i) {
    const std::string text = RandomText(random);
    ASSERT_EQ(db::sqlite::StoredTextAsUtf16(text), engine.AsUtf16(text)) << "text " << i;
  }
}

TEST(StoredTextCollation, OrdersAsTheUtf16FormOfTheSameTexts) {
  std::mt19937 random(20260331);
  const auto text = [&random] { return RandomText(random); };
  const auto ci = *db::CollationFromName(u"Chinese_PRC_CI_AS");
  const auto cs = *db::CollationFromName(u"Latin1_General_CS_AS");
  Engine engine;
  for (int i = 0; i < 40000; ++i) {
    std::string a = text();
    // Often a variant of the same text, so that ties and near ties come up.
    std::string b = random() % 2 ? text() : a + (random() % 2 ? " " : "") + text().substr(0, 1);
    const String a16 = engine.AsUtf16(a);
    const String b16 = engine.AsUtf16(b);
    const auto [ci_sign, cs_sign] = engine.Compare(a, b);
    ASSERT_EQ(ci_sign, Sign(ci.Compare(a16, b16))) << "case-insensitive, pair " << i;
    ASSERT_EQ(cs_sign, Sign(cs.Compare(a16, b16))) << "case-sensitive, pair " << i;
  }
}

TEST(StoredTextCollation, IgnoresTrailingBlanksAndCaseAsTheServerDoes) {
  Engine engine;
  EXPECT_EQ(engine.Compare("abc", "ABC  ").first, 0);
  EXPECT_EQ(engine.Compare("abc", "ABC  ").second, 1);
  EXPECT_EQ(engine.Compare("\xEF\xBC\xA1", "a").first, 0) << "a full-width letter is narrowed";
  EXPECT_EQ(engine.Compare("ab", "ab c").first, -1);
  EXPECT_EQ(engine.Compare(" a", "a").first, -1) << "leading blanks count";
}

}  // namespace
}  // namespace kavrin
