// The suite's SQL on each engine: the server's comparison rules, its string
// functions, bit columns, column typing and the read-only guarantee.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

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

constexpr const char* kSqliteRewrite = "about the SQLite dialect's rewrite of the text";

// All values of the first column, as text.
std::vector<Variant> Column0(db::Connection& c, StringView sql) {
  auto cursor = c.Query(sql);
  std::vector<Variant> values;
  while (cursor->Next())
    values.push_back(cursor->Value(0));
  return values;
}

TEST(Dialect, CallKeywordsAreQuotedOnlyWhereTheyAreCalls) {
  if (OnPostgres()) GTEST_SKIP() << kSqliteRewrite;
  using db::sqlite::QuoteCallKeywords;
  EXPECT_EQ(QuoteCallKeywords(u"WHERE  RIGHT(cMonth,2)<>'03'"),
            u"WHERE  \"RIGHT\"(cMonth,2)<>'03'");
  EXPECT_EQ(QuoteCallKeywords(u"select left (a,1), Right(b,2)"),
            u"select \"left\" (a,1), \"Right\"(b,2)");
  EXPECT_EQ(QuoteCallKeywords(u"a LEFT JOIN b ON x WHERE c='RIGHT(' -- RIGHT(\n"),
            u"a LEFT JOIN b ON x WHERE c='RIGHT(' -- RIGHT(\n");
  EXPECT_EQ(QuoteCallKeywords(u"select bright(x), rightmost(y)"),
            u"select bright(x), rightmost(y)");
}

TEST(Dialect, TextComparesWithoutCaseOrTrailingBlanks) {
  SuiteDb suite;
  suite.Exec("INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('a1', 'Main  '), ('B2', 'Ｓtore')");
  auto c = db::Open(suite.ConnectionString());
  EXPECT_EQ(Column0(*c, u"select cWhCode from WAREHOUSE where cwhcode='A1   '").size(), 1u);
  EXPECT_EQ(Column0(*c, u"select cWhCode from warehouse where cWhName='main'").size(), 1u);
  EXPECT_EQ(Column0(*c, u"select cWhCode from warehouse where cWhName='store'").size(), 1u)
      << "full-width letters equal their ASCII forms";
  EXPECT_TRUE(Column0(*c, u"select cWhCode from warehouse where cWhCode=' a1'").empty())
      << "leading blanks count";
  // ORDER BY follows the column's collation as well.
  const auto ordered = Column0(*c, u"select cWhCode from warehouse order by cWhCode");
  EXPECT_EQ(ordered[0].AsString(), u"a1");
}

TEST(Dialect, ServerStringFunctions) {
  SuiteDb suite;
  suite.Exec("INSERT INTO Warehouse (cWhCode, cMonth) VALUES ('01', '202603  ')");
  auto c = db::Open(suite.ConnectionString());
  auto one = [&](StringView sql) { return Column0(*c, sql).at(0); };
  EXPECT_EQ(one(u"select len('ab  ')").AsLong(), 2);
  EXPECT_EQ(one(u"select len('  ab')").AsLong(), 4);
  EXPECT_EQ(one(u"select len(' ')").AsLong(), 0);
  EXPECT_EQ(one(u"select len('仓库')").AsLong(), 2);
  EXPECT_EQ(one(u"select RIGHT('202603',2)").AsString(), u"03");
  EXPECT_EQ(one(u"select right('ab',5)").AsString(), u"ab");
  EXPECT_EQ(one(u"select LEFT('202603',4)").AsString(), u"2026");
  EXPECT_EQ(one(u"select substring('abcdef',0,3)").AsString(), u"ab");
  EXPECT_EQ(one(u"select substring('abcdef',-1,3)").AsString(), u"a");
  EXPECT_EQ(one(u"select substring('abcdef',9,3)").AsString(), u"");
  EXPECT_EQ(one(u"select substring('010105',1, len('0101  '))").AsString(), u"0101");
  EXPECT_TRUE(one(u"select len(NULL)").IsNull());
  // A column's value keeps its trailing blanks in right(), left() and
  // substring(), though len() and comparisons ignore them.
  EXPECT_EQ(one(u"select RIGHT(cMonth,2) from Warehouse").AsString(), u"  ");
  EXPECT_EQ(one(u"select left(cMonth,8) from Warehouse").AsString(), u"202603  ");
  EXPECT_EQ(one(u"select substring(cMonth,5,4) from Warehouse").AsString(), u"03  ");
  EXPECT_EQ(one(u"select len(cMonth) from Warehouse").AsLong(), 6);
  EXPECT_EQ(
      Column0(*c, u"SELECT cWhCode , cMonth from Warehouse WHERE  RIGHT(cMonth,2)<>'03'").size(),
      1u);
  EXPECT_KAVRIN_ERROR(one(u"select right(cMonth,-1) from Warehouse"), errors::kProviderSyntax);
}

TEST(Dialect, NegativeLengthOfALiteralIsAnError) {
  if (OnPostgres()) GTEST_SKIP() << "PostgreSQL's own right() of a literal takes -1 as 'all but 1'";
  SuiteDb suite;
  auto c = db::Open(suite.ConnectionString());
  EXPECT_KAVRIN_ERROR(Column0(*c, u"select right('ab',-1)"), errors::kProviderSyntax);
}

TEST(Dialect, BitColumnsCompareWithNumbersAndReadAsBooleans) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO Rd_Style (cRdCode, bRdFlag, bRdEnd) VALUES"
      " ('1', 1, 0), ('11', 1, 1), ('12', 0, 1), ('13', NULL, NULL);"
      "INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA) VALUES (1, 1, 1), (2, 0, 1), (3, 0, 0);");
  auto c = db::Open(suite.ConnectionString());
  auto codes = [&](StringView where) {
    std::vector<String> out;
    for (const auto& v : Column0(*c, u"select cRdCode from Rd_Style where " + String(where)))
      out.push_back(v.AsString());
    return out;
  };
  EXPECT_EQ(codes(u"bRdEnd=1"), (std::vector<String>{u"11", u"12"}));
  EXPECT_EQ(codes(u"bRdEnd = 0"), (std::vector<String>{u"1"}));
  EXPECT_EQ(codes(u"bRdEnd<>1"), (std::vector<String>{u"1"})) << "Null is neither";
  EXPECT_EQ(codes(u"1=bRdFlag"), (std::vector<String>{u"1", u"11"}));
  EXPECT_EQ(codes(u"bRdEnd=2"), std::vector<String>{}) << "a bit is never 2";
  EXPECT_EQ(codes(u"cRdCode='11' AND bRdEnd=1"), (std::vector<String>{u"11"}));
  EXPECT_EQ(codes(u"bRdEnd is NULL"), (std::vector<String>{u"13"}));
  const auto flags = Column0(*c, u"Select bFlag from gl_mend where iPeriod=1");
  ASSERT_EQ(flags.size(), 1u);
  EXPECT_EQ(flags[0], Variant(true));
  EXPECT_EQ(Column0(*c, u"select bRdEnd from Rd_Style where cRdCode='1'")[0], Variant(false));
  EXPECT_EQ(
      ToLong(Column0(*c, u"SELECT MAX(iPeriod) AS CurMonth FROM GL_mEnd WHERE bFlag_IA=1")[0]), 2);
}

TEST(Dialect, NestedInnerJoinsRun) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO RdRecord (ID, cBusType) VALUES (1, '普通采购');"
      "INSERT INTO RdRecords (AutoID, ID) VALUES (10, 1);"
      "INSERT INTO JustInVouchs (AutoID, cJVCode, CorID) VALUES (100, 'J1', 10);");
  auto c = db::Open(suite.ConnectionString());
  const auto rows = Column0(
      *c,
      u"SELECT RdRecord.cBusType FROM RdRecord INNER JOIN (RdRecords INNER JOIN JustInVouchs ON "
      u"RdRecords.AutoID=JustInVouchs.CorID) ON RdRecord.ID=RdRecords.ID WHERE "
      u"JustInVouchs.AutoID=100");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].AsString(), u"普通采购");
}

TEST(Dialect, ValuesAreTypedFromDeclaredColumnTypes) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA) VALUES (3, 1, NULL);"
      "INSERT INTO InventoryClass (cInvCCode, iInvCGrade) VALUES ('01', 1);"
      "INSERT INTO Inventory (cInvCode, iInvRCost) VALUES ('01', 12);"
      "INSERT INTO IA_Subsidiary (JustID, dKeepDate) VALUES (7, '2026-03-31 08:30:00');");
  auto c = db::Open(suite.ConnectionString());
  auto cursor = c->Query(u"select iPeriod, bFlag, bFlag_IA from gl_mend");
  ASSERT_TRUE(cursor->Next());
  if (OnPostgres()) {
    EXPECT_EQ(cursor->Value(0), Variant(int16_t{3})) << "PostgreSQL has no one-byte TINYINT";
  } else {
    EXPECT_EQ(cursor->Value(0), Variant(uint8_t{3}));
  }
  EXPECT_EQ(cursor->Value(1), Variant(true));
  EXPECT_TRUE(cursor->Value(2).IsNull());
  EXPECT_FALSE(cursor->Next());
  const Variant max = Column0(*c, u"select MAX(iPeriod) as m from gl_mend")[0];
  if (OnPostgres()) {
    EXPECT_EQ(max, Variant(int16_t{3})) << "the server types MAX() by its column";
  } else {
    EXPECT_EQ(max, Variant(int32_t{3})) << "an expression is typed by its storage";
  }
  EXPECT_EQ(Column0(*c, u"select iInvCGrade from InventoryClass")[0], Variant(int16_t{1}));
  EXPECT_EQ(Column0(*c, u"select iInvRCost from Inventory")[0], Variant(12.0));
  EXPECT_EQ(Column0(*c, u"select cInvCode from Inventory")[0], Variant(u"01"));
  EXPECT_EQ(Column0(*c, u"select JustID from IA_Subsidiary")[0], Variant(int32_t{7}));
  EXPECT_EQ(Column0(*c, u"select AutoID from IA_Subsidiary")[0], Variant(int32_t{1}))
      << "a row id left out is filled in";
  const Variant keep = Column0(*c, u"select dKeepDate from IA_Subsidiary")[0];
  ASSERT_EQ(keep.type(), VarType::Date);
  EXPECT_DOUBLE_EQ(keep.AsDate().value, 46112 + 8.5 / 24);  // 31 March 2026 08:30
  EXPECT_TRUE(Column0(*c, u"select cInvName from Inventory")[0].IsNull());

  // Long texts come back whole, trailing blanks and all.
  std::string long_name;
  for (int i = 0; i < 1500; ++i)
    long_name += "仓库";
  suite.Exec("UPDATE Inventory SET cInvStd = '" + long_name + "  '");
  EXPECT_EQ(Column0(*c, u"select cInvStd from Inventory")[0], Variant(FromUtf8(long_name + "  ")));
}

TEST(Dialect, ACursorOutlivesItsConnection) {
  SuiteDb suite;
  suite.Exec("INSERT INTO Code (cCode) VALUES ('1403'), ('1405')");
  auto cursor = db::Open(suite.ConnectionString())->Query(u"select cCode from Code");
  ASSERT_TRUE(cursor->Next());
  EXPECT_EQ(cursor->Value(0), Variant(u"1403"));
  ASSERT_TRUE(cursor->Next());
  EXPECT_EQ(cursor->Value(0), Variant(u"1405"));
  EXPECT_FALSE(cursor->Next());
}

TEST(Dialect, ColumnsAreNamedAsTheStatementNamesThem) {
  SuiteDb suite;
  suite.Exec("INSERT INTO GL_mEnd (iPeriod, bFlag_IA) VALUES (1, 1)");
  auto c = db::Open(suite.ConnectionString());
  auto cursor = c->Query(u"SELECT MAX(iPeriod) AS CurMonth, min(iPeriod) as name FROM GL_mEnd");
  ASSERT_EQ(cursor->Columns().size(), 2u);
  EXPECT_EQ(cursor->Columns()[0].name, u"CurMonth");
  EXPECT_EQ(cursor->Columns()[1].name, u"name");
}

TEST(Dialect, StatementsThatWriteAreRefused) {
  SuiteDb suite(/*demo=*/true);
  auto c = db::Open(suite.ConnectionString());
  EXPECT_KAVRIN_ERROR(c->Query(u"DELETE FROM Inventory"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"select 1; DELETE FROM Inventory"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"select * from inventory where cinvcode='x'; drop table code"),
                      errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"select 'it''s'; delete from code -- '"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"ATTACH 'x.db' AS x"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"PRAGMA user_version=5"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"select load_extension('libx')")->Next(), errors::kProviderSyntax);
  // A statement that reads yet would write is refused by the engine itself:
  // on a server, by the read-only session.
  try {
    c->Query(u"select * into InventoryCopy from Inventory");
    ADD_FAILURE() << "SELECT INTO ran";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), errors::kProviderSyntax);
    if (OnPostgres()) {
      EXPECT_NE(e.description().find(u"read-only transaction"), String::npos);
    }
  }
  EXPECT_KAVRIN_ERROR(c->Query(u"   "), errors::kProviderSyntax);
  EXPECT_NO_THROW(c->Query(u"select 1; -- a trailing comment\n ;"));
  EXPECT_EQ(ToDouble(Column0(*c, u"select count(*) from Inventory")[0]), 6);
  EXPECT_EQ(ToDouble(Column0(*c, u"select count(*) from Code")[0]), 4);
  EXPECT_KAVRIN_ERROR(c->Query(u"select * from InventoryCopy"), errors::kProviderNoTable);
}

TEST(Dialect, TheFileIsNeverWritten) {
  if (OnPostgres()) GTEST_SKIP() << "about the bytes of a SQLite file";
  SuiteDb suite(/*demo=*/true);
  auto read_file = [&] {
    std::ifstream in(suite.path(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  const std::string before = read_file();
  auto c = db::Open(suite.ConnectionString());
  EXPECT_ANY_THROW(c->Query(u"DELETE FROM Inventory"));
  EXPECT_ANY_THROW(c->Query(u"PRAGMA user_version=5"));
  Column0(*c, u"select * from Inventory");
  c.reset();
  EXPECT_EQ(read_file(), before);
}

TEST(Dialect, OpeningFailsCleanly) {
  if (OnPostgres()) GTEST_SKIP() << "about opening SQLite files";
  testing::TempDir dir;
  EXPECT_KAVRIN_ERROR(db::Open(FromUtf8("sqlite:" + dir.path() + "/missing.db")),
                      errors::kProviderFailure);
  const std::string junk = dir.path() + "/junk.db";
  std::ofstream(junk) << "this is not a database, just some text that is long enough";
  EXPECT_KAVRIN_ERROR(db::Open(FromUtf8(junk)), errors::kProviderFailure);
  EXPECT_KAVRIN_ERROR(db::Open(u"mysql://nowhere"), errors::kProviderFailure);
}

TEST(Collation, ServerCollationNames) {
  const auto ci = db::CollationFromName(u"Chinese_PRC_CI_AS");
  ASSERT_TRUE(ci);
  EXPECT_TRUE(ci->Equal(u"Abc", u"aBC  "));
  EXPECT_TRUE(ci->Equal(u"ÄÖ", u"äö"));
  const auto cs = db::CollationFromName(u"Latin1_General_CS_AS");
  ASSERT_TRUE(cs);
  EXPECT_FALSE(cs->Equal(u"Abc", u"abc"));
  EXPECT_TRUE(cs->Equal(u"abc", u"abc "));
  EXPECT_FALSE(db::CollationFromName(u"NOCASE"));
  EXPECT_LT(ci->Compare(u"01", u"02"), 0);
}

}  // namespace
}  // namespace kavrin
