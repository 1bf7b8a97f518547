// The suite schema's indexes answer the archive lookups, and leave the order
// in which the engine lists rows to the members as it was.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "db/sqlite/Dialect.h"
#include "kavrin/clsPub.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using testing::QueryTrace;
using testing::SuiteDb;

// The plan SQLite makes for `sql`, one detail line after another.
std::string Plan(const SuiteDb& suite, const std::string& sql) {
  sqlite3* db = nullptr;
  sqlite3_open_v2(suite.path().c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  db::sqlite::RegisterDialect(db);
  sqlite3_stmt* stmt = nullptr;
  std::string plan;
  if (sqlite3_prepare_v2(db, ("EXPLAIN QUERY PLAN " + sql).c_str(), -1, &stmt, nullptr) ==
      SQLITE_OK) {
    while (sqlite3_step(stmt) == SQLITE_ROW)
      plan += reinterpret_cast<const char*>(sqlite3_column_text(stmt, 3)) + std::string("; ");
  } else {
    plan = sqlite3_errmsg(db);
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return plan;
}

TEST(SchemaIndexes, AnswerEveryArchiveLookupByCodeAndByName) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about the query plans of the SQLite schema's indexes";
  SuiteDb suite;
  const std::vector<std::string> lookups = {
      "select * from inventory where cinvcode='x'",
      "select * from inventory where cinvname='x'",
      "select * from vendor where cvencode='x'",
      "select * from vendor where cvenabbname='x'",
      "select * from customer where ccuscode='x'",
      "select * from warehouse where cwhcode='x'",
      "select * from warehouse where cwhname='x'",
      "select * from person where cpersoncode='x'",
      "select * from person where cpersonname='x'",
      "select * from settlestyle where csscode='x'",
      "select * from settlestyle where cssname='x'",
      "select * from inventoryclass where cinvccode='x'",
      "select * from inventoryclass where cinvcname='x'",
      "select * from vendorclass where cvccode='x'",
      "select * from vendorclass where cvcname='x'",
      "select * from customerclass where ccccode='x'",
      "select * from customerclass where cccname='x'",
      "select * from department where cdepcode='x'",
      "select * from department where cdepname='x'",
      "select * from code where ccode='x'",
      "select * from code where ccode_name='x'",
      "select cInvName as name from Inventory where cInvCode='x'",
      "SELECT cWhCode,cWhName FROM WareHouse WHERE cDepCode='x' ORDER BY cWhCode",
      "SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode='x'",
  };
  for (const auto& sql : lookups) {
    const std::string plan = Plan(suite, sql);
    EXPECT_NE(plan.find("USING"), std::string::npos) << sql << ": " << plan;
  }
  // What a find on a whole table asks of the engine: the rows come through
  // the index already in the table's order, with nothing to sort.
  for (const char* column :
       {"Rd_Style\" WHERE \"cRdName", "CostObj\" WHERE \"cCode", "CostObj\" WHERE \"cName"}) {
    const std::string sql = std::string("SELECT rowid, * FROM \"") + column +
                            "\" = 'x' COLLATE \"Chinese_PRC_CI_AS\" ORDER BY rowid";
    const std::string plan = Plan(suite, sql);
    EXPECT_NE(plan.find("USING INDEX"), std::string::npos) << sql << ": " << plan;
    EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << sql << ": " << plan;
  }
}

TEST(SchemaIndexes, LeaveTheDistinctDepartmentsInTheOrderOfTheWarehouses) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "PostgreSQL lists DISTINCT values in no particular order";
  // The binding check asks one query per department, in the order the
  // database lists them: the order their warehouses come in, not sorted.
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES"
      " ('1', 'D3', 'FIFO'), ('2', 'D1', 'FIFO'), ('3', 'D3', 'FIFO'), ('4', 'D2', 'LIFO')");
  auto db = suite.Open();
  QueryTrace trace(*db);
  clsPub pub;
  pub.DBIA(db);
  EXPECT_TRUE(pub.CheckWareDep());
  const std::string style = "SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode='";
  EXPECT_EQ(trace.texts(), (std::vector<String>{u"SELECT * FROM WareHouse WHERE cDepCode is null",
                                                u"SELECT DISTINCT cDepCode FROM Warehouse",
                                                FromUtf8(style + "D3'"), FromUtf8(style + "D1'"),
                                                FromUtf8(style + "D2'")}));
}

}  // namespace
}  // namespace kavrin
