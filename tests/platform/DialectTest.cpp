// The suite's SQL on the embedded engine: server comparison rules, the
// server's string functions, column typing and the read-only guarantee.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "db/Collation.h"
#include "db/Driver.h"
#include "db/sqlite/Dialect.h"
#include "kavrin/Error.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using testing::SuiteDb;

// All values of the first column, as text.
std::vector<Variant> Column0(db::Connection& c, StringView sql) {
  auto cursor = c.Query(sql);
  std::vector<Variant> values;
  while (cursor->Next())
    values.push_back(cursor->Value(0));
  return values;
}

TEST(Dialect, CallKeywordsAreQuotedOnlyWhereTheyAreCalls) {
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
  EXPECT_KAVRIN_ERROR(one(u"select right('ab',-1)"), errors::kProviderSyntax);
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
  auto cursor = c->Query(u"select iPeriod, bFlag, bFlag_IA, MAX(iPeriod) as m from gl_mend");
  ASSERT_TRUE(cursor->Next());
  EXPECT_EQ(cursor->Value(0), Variant(uint8_t{3}));
  EXPECT_EQ(cursor->Value(1), Variant(true));
  EXPECT_TRUE(cursor->Value(2).IsNull());
  EXPECT_EQ(cursor->Value(3), Variant(int32_t{3})) << "an expression is typed by its storage";
  EXPECT_EQ(Column0(*c, u"select iInvCGrade from InventoryClass")[0], Variant(int16_t{1}));
  EXPECT_EQ(Column0(*c, u"select iInvRCost from Inventory")[0], Variant(12.0));
  EXPECT_EQ(Column0(*c, u"select cInvCode from Inventory")[0], Variant(u"01"));
  EXPECT_EQ(Column0(*c, u"select JustID from IA_Subsidiary")[0], Variant(int32_t{7}));
  const Variant keep = Column0(*c, u"select dKeepDate from IA_Subsidiary")[0];
  ASSERT_EQ(keep.type(), VarType::Date);
  EXPECT_DOUBLE_EQ(keep.AsDate().value, 46112 + 8.5 / 24);  // 31 March 2026 08:30
}

TEST(Dialect, TheDatabaseIsNeverWritten) {
  SuiteDb suite(/*demo=*/true);
  auto read_file = [&] {
    std::ifstream in(suite.path(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  const std::string before = read_file();
  auto c = db::Open(suite.ConnectionString());
  EXPECT_KAVRIN_ERROR(c->Query(u"DELETE FROM Inventory"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"select 1; DELETE FROM Inventory"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"select * from inventory where cinvcode='x'; drop table code"),
                      errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"ATTACH 'x.db' AS x"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"PRAGMA user_version=5"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(c->Query(u"select load_extension('libx')")->Next(), errors::kProviderSyntax);
  EXPECT_NO_THROW(c->Query(u"select 1; -- a trailing comment\n ;"));
  EXPECT_EQ(read_file(), before);
}

TEST(Dialect, OpeningFailsCleanly) {
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
