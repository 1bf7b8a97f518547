// The probe of a desktop database for its tables and stored queries.
#include <gtest/gtest.h>

#include "db/Driver.h"
#include "kavrin/Convert.h"
#include "kavrin/Dao.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

// A desktop database made from a real SQLite file.
TEST(DesktopProbe, TablesAndStoredQueriesAreFoundByNameAndOnlyItemNotFoundIsAbsent) {
  const testing::TempDir dir;
  const String path = FromUtf8(dir.path() + "/desk.db");
  db::OpenForSetup(u"sqlite:" + path)
      ->ExecuteScript(
          u"CREATE TABLE Orders (id INTEGER); CREATE TABLE ÄrgerListe (id INTEGER);"
          u"CREATE VIEW BigOrders AS SELECT * FROM Orders;");
  const auto db = dao::Database::Open(path);
  EXPECT_EQ(db->TableDefs(u"orders")->Name(), u"Orders") << "the stored letter case";
  clsPub pub;
  // A name, whether it is asked for as a stored query, and whether it is found.
  const std::tuple<const char16_t*, bool, bool> probes[] = {
      {u"oRDERS", false, true}, {u"ÄrgerListe", false, true}, {u"Orders ", false, false},
      {u"", false, false},      {u"BigOrders", false, false}, {u"bigorders", true, true},
      {u"Orders", true, false}};
  for (const auto& [name, query, found] : probes)
    EXPECT_EQ(pub.ExistTableQueryDAO(db, name, query), found) << ToUtf8(name) << " " << query;
  EXPECT_TRUE(pub.ExistTableQueryDAO(nullptr, u"Orders", true)) << "an empty reference";

  // By name the database must be an object argument.
  std::vector<Variant> not_a_database{std::shared_ptr<Dispatch>(std::make_shared<clsPub>()),
                                      u"Orders"};
  EXPECT_KAVRIN_ERROR(pub.Call(u"ExistTableQueryDAO", not_a_database), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(dao::Database::Open(FromUtf8(dir.path() + "/none.db")),
                      errors::kProviderFailure, sources::kSqlite);
}

}  // namespace
}  // namespace kavrin
