// The suite's SQL on each engine: the server's comparison rules, its string
// functions, bit columns, column typing, the read-only guarantee, and the
// text collations themselves.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <iterator>
#include <random>

#include "db/Collation.h"
#include "db/Driver.h"
#include "db/sqlite/Dialect.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using testing::OnPostgres;
using testing::SuiteDb;

// Every value of every row, each followed by '|'.
std::string Rows(std::unique_ptr<db::Cursor> cursor) {
  std::string rows;
  while (cursor->Next()) {
    for (size_t i = 0; i < cursor->Columns().size(); ++i)
      rows += (cursor->Value(i).IsNull() ? "Null" : ToUtf8(ToString(cursor->Value(i)))) + "|";
  }
  return rows;
}

TEST(Dialect, CallKeywordsAreQuotedOnlyWhereTheyAreCalls) {
  if (OnPostgres()) GTEST_SKIP() << "about the SQLite dialect's rewrite of the text";
  using db::sqlite::QuoteCallKeywords;
  EXPECT_EQ(QuoteCallKeywords(u"select left (a,1), Right(b,2) WHERE  RIGHT(cMonth,2)<>'03'"
                              u" AND left/* why */\n(c,1)=''"),
            u"select \"left\" (a,1), \"Right\"(b,2) WHERE  \"RIGHT\"(cMonth,2)<>'03'"
            u" AND \"left\"/* why */\n(c,1)=''");
  const StringView same =
      u"a LEFT JOIN b ON bright(x)=rightmost(y) WHERE c='RIGHT(' -- RIGHT(\n AND [left](1)"
      u" AND `Right` (2) AND \"LEFT\"(3) /* left(4) */ AND x.1right(5)";
  EXPECT_EQ(QuoteCallKeywords(same), same);
}

// What the engine answers to each query, and which statements it refuses: only
// reads are run, on a server by the read-only session.
TEST(Dialect, AnswersAsTheServerDoesAndRunsNothingButReads) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO Warehouse (cWhCode, cWhName, cMonth) VALUES ('a1', 'Main  ', '202603  '),"
      " ('B2', 'Ｓtore', '202603');"
      "INSERT INTO Rd_Style (cRdCode, bRdFlag, bRdEnd) VALUES"
      " ('1', 1, 0), ('11', 1, 1), ('12', 0, 1), ('13', NULL, NULL);"
      "INSERT INTO GL_mEnd (iPeriod) VALUES (1), (2), (3);");
  auto c = db::Open(suite.ConnectionString());
  const std::string a1 = " from Warehouse where cWhCode='a1'", rd = "cRdCode from Rd_Style where ";
  const std::pair<std::string, const char*> cases[] = {
      // Texts compare without case, trailing blanks or width; leading blanks
      // count; ORDER BY follows the column's collation.
      {"cWhCode from WAREHOUSE where cwhcode='A1   '", "a1|"},
      {"cWhCode from warehouse where cWhName='main'", "a1|"},
      {"cWhCode from warehouse where cWhName='store'", "B2|"},
      {"cWhCode from warehouse where cWhCode=' a1'", ""},
      {"cWhCode from warehouse order by cWhCode", "a1|B2|"},
      // len() ignores trailing blanks; right(), left() and substring() of a
      // value keep them.
      {"len('ab  '), len('  ab'), len(' '), len('仓库'), len(NULL), len(cMonth)" + a1,
       "2|4|0|2|Null|6|"},
      {"RIGHT('202603',2), right('ab',5), LEFT('202603',4), RIGHT(cMonth,2), left(cMonth,8)" + a1,
       "03|ab|2026|  |202603  |"},
      {"substring('abcdef',0,3), substring('abcdef',-1,3), substring('abcdef',9,3), "
       "substring(cMonth,5,4), substring('010105',1, len('0101  '))" +
           a1,
       "ab|a||03  |0101|"},
      // Bit columns compare with numbers; Null is neither 0 nor 1.
      {rd + "bRdEnd=1", "11|12|"},
      {rd + "bRdEnd<>1", "1|"},
      {rd + "1=bRdFlag", "1|11|"},
      {rd + "bRdEnd=2", ""},
      {rd + "bRdEnd is NULL", "13|"},
      {"count(*) from Warehouse union all select count(*) from GL_mEnd", "2|3|"},
      // A trailing semicolon or comment does not make a second statement.
      {"1; -- a trailing comment\n ;", "1|"}};
  for (const auto& [sql, expected] : cases)
    EXPECT_EQ(Rows(c->Query(FromUtf8("select " + sql))), expected) << sql;
  // A negative length fails as on the server, naming the function given it.
  for (const std::string function : {"left", "right"}) {
    const std::string call = function + "(cMonth,-1)";
    try {
      Rows(c->Query(FromUtf8("select " + call + a1)));
      ADD_FAILURE() << call;
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), errors::kProviderSyntax) << call;
      EXPECT_EQ(e.source(), testing::EngineSource()) << call;
      EXPECT_NE(ToUtf8(e.description())
                    .find("Invalid length parameter passed to the " + function + " function."),
                std::string::npos)
          << ToUtf8(e.description());
    }
  }
  // A statement that reads yet would write is refused by the engine itself.
  for (const char16_t* sql : {u"DELETE FROM Warehouse", u"   "})
    EXPECT_KAVRIN_ERROR(c->Query(sql)->Next(), errors::kProviderSyntax, testing::EngineSource());
  EXPECT_KAVRIN_ERROR(c->Query(u"select * into WarehouseCopy from Warehouse"),
                      errors::kProviderSyntax, testing::EngineSource());
  EXPECT_KAVRIN_ERROR(c->Query(u"select * from WarehouseCopy"), errors::kProviderNoTable,
                      testing::EngineSource());
  // A cursor outlives its connection, and names its columns as the statement does.
  auto cursor = db::Open(suite.ConnectionString())
                    ->Query(u"SELECT MAX(iPeriod) AS CurMonth, min(iPeriod) as name FROM GL_mEnd");
  EXPECT_EQ(cursor->Columns()[0].name + u"," + cursor->Columns()[1].name, u"CurMonth,name");
  EXPECT_EQ(Rows(std::move(cursor)), "3|1|");
}

TEST(Dialect, ValuesAreTypedFromDeclaredColumnTypes) {
  SuiteDb suite(/*demo=*/true);
  const String long_name = String(3000, u'仓') + u"  ";  // read back whole, blanks and all
  suite.Exec("UPDATE Inventory SET cInvStd = '" + ToUtf8(long_name) +
             "' WHERE cInvCode = '010102';"
             "UPDATE IA_Subsidiary SET dKeepDate = '2026-03-31 08:30:00' WHERE JustID = 9001");
  auto c = db::Open(suite.ConnectionString());
  auto value = [&](const std::string& sql) {
    auto cursor = c->Query(FromUtf8("select " + sql));
    EXPECT_TRUE(cursor->Next()) << sql;
    return cursor->Value(0);
  };
  // PostgreSQL has no one-byte TINYINT, and types MAX() by its column;
  // SQLite types an expression by its storage class.
  EXPECT_EQ(value("iPeriod from GL_mEnd where iPeriod=3"),
            OnPostgres() ? Variant(int16_t{3}) : uint8_t{3});
  EXPECT_EQ(value("MAX(iPeriod) from GL_mEnd"), OnPostgres() ? Variant(int16_t{12}) : int32_t{12});
  const std::pair<const char*, Variant> cases[] = {
      {"bFlag from GL_mEnd where iPeriod=1", true},
      {"bFlag from GL_mEnd where iPeriod=3", false},
      {"iInvCGrade from InventoryClass where cInvCCode='0101'", int16_t{2}},
      {"iInvRCost from Inventory where cInvCode='010101'", 86.5},
      {"cInvStd from Inventory where cInvCode='010102'", long_name},
      {"JustID from IA_Subsidiary where cBusType='领料'", Variant::Null()},
      {"JustID from IA_Subsidiary where cBusType='入库调整'", int32_t{9001}},
      {"AutoID from IA_Subsidiary where JustID=9001", int32_t{3}}};  // filled in when left out
  for (const auto& [sql, expected] : cases)
    EXPECT_EQ(value(sql), expected) << sql;
  const Variant keep = value("dKeepDate from IA_Subsidiary where JustID=9001");
  ASSERT_EQ(keep.type(), VarType::Date);
  EXPECT_DOUBLE_EQ(keep.AsDate().value, 46112 + 8.5 / 24);  // 31 March 2026 08:30
}

// Server collations by name; and a UTF-8 database compares its texts, and the
// driver reads them, without SQLite turning them into UTF-16 first: both must
// agree with SQLite's own UTF-16 form of them (an index built by either must
// serve the other), for ill-formed texts too: stray continuation bytes,
// truncated, overlong and surrogate sequences, non-characters, leads of five
// and six bytes.
TEST(Collation, ServerRulesAndStoredUtf8TextsAgreeWithTheirUtf16Form) {
  const auto ci = db::CollationFromName(u"Chinese_PRC_CI_AS");
  const auto cs = db::CollationFromName(u"Latin1_General_CS_AS");
  ASSERT_TRUE(ci && cs);
  EXPECT_FALSE(db::CollationFromName(u"NOCASE"));
  EXPECT_TRUE(ci->Equal(u"Abc", u"aBC  ") && ci->Equal(u"ÄÖ", u"äö") &&
              ci->Compare(u"01", u"02") < 0);
  EXPECT_TRUE(cs->Equal(u"abc", u"abc ") && !cs->Equal(u"Abc", u"abc"));
  const char* pieces[] = {
      // Well-formed, in several cases and widths.
      "a", "A", "z", "Z", " ", "0", "\xC3\xA9", "\xC3\x89", "\xE4\xB8\xAD", "\xEF\xBC\xA1",
      "\xEF\xBD\x81", "\xF0\x9F\x98\x80", "\xF0\x90\x90\xA8", "\xF0\x90\x90\x80",
      // Ill-formed, and long continuation runs.
      "\x80", "\xBF", "\xC0", "\xC1\x81", "\xC0\xA0", "\xE0\x80", "\xED\xA0\x80", "\xED\xBF\xBF",
      "\xEF\xBF\xBE", "\xEF\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
      "\xFC\x84\x80\x80\x80\x80", "\xFE", "\xFF", "\x80\x80\x80\x80\x80\x80\x80", "\xE4\xB8",
      "\xC3"};
  std::mt19937 random(20260331);
  auto text = [&] {
    std::string t;
    for (int n = static_cast<int>(random() % 6); n > 0; --n)
      t += pieces[random() % std::size(pieces)];
    return t;
  };
  // SQLite's own UTF-16 form of the two texts, and the signs of its comparisons.
  sqlite3* db = nullptr;
  sqlite3_stmt* stmt = nullptr;
  sqlite3_open(":memory:", &db);
  db::sqlite::RegisterDialect(db);
  sqlite3_prepare_v2(db,
                     "SELECT ?1, ?2, (?1 > ?2 COLLATE Chinese_PRC_CI_AS) - (?1 < ?2 COLLATE "
                     "Chinese_PRC_CI_AS), (?1 > ?2 COLLATE Latin1_General_CS_AS) - (?1 < ?2 "
                     "COLLATE Latin1_General_CS_AS)",
                     -1, &stmt, nullptr);
  auto utf16 = [&](int i) {
    return String(static_cast<const char16_t*>(sqlite3_column_text16(stmt, i)),
                  static_cast<size_t>(sqlite3_column_bytes16(stmt, i) / 2));
  };
  auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (int i = 0; i < 40000 && !::testing::Test::HasFailure(); ++i) {
    const std::string a = text();
    // Often a variant of the same text, so that ties and near ties come up.
    const std::string b =
        random() % 2 ? text() : a + (random() % 2 ? " " : "") + text().substr(0, 1);
    sqlite3_bind_text(stmt, 1, a.data(), static_cast<int>(a.size()), SQLITE_STATIC);
    sqlite3_bind_text(stmt, 2, b.data(), static_cast<int>(b.size()), SQLITE_STATIC);
    EXPECT_EQ(sqlite3_step(stmt), SQLITE_ROW);
    const String a16 = utf16(0), b16 = utf16(1);
    EXPECT_EQ(db::sqlite::StoredTextAsUtf16(a), a16) << "text " << i;
    EXPECT_EQ(sqlite3_column_int(stmt, 2), sign(ci->Compare(a16, b16))) << "case-insensitive " << i;
    EXPECT_EQ(sqlite3_column_int(stmt, 3), sign(cs->Compare(a16, b16))) << "case-sensitive " << i;
    sqlite3_reset(stmt);
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
}

}  // namespace
}  // namespace kavrin
