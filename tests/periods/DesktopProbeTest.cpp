// ExistTableQueryDAO over desktop databases made from real SQLite files.
#include <gtest/gtest.h>

#include "db/Driver.h"
#include "kavrin/Dao.h"
#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

// A desktop database with two tables and one stored query; answers its path.
std::string MakeDesktopDatabase(const testing::TempDir& dir) {
  const std::string path = dir.path() + "/desk.db";
  db::OpenForSetup(u"sqlite:" + FromUtf8(path))
      ->ExecuteScript(
          u"CREATE TABLE Orders (id INTEGER, amount FLOAT);"
          u"CREATE TABLE ÄrgerListe (id INTEGER);"
          u"CREATE VIEW BigOrders AS SELECT * FROM Orders WHERE amount > 100;");
  return path;
}

class DesktopProbe : public ::testing::Test {
 protected:
  testing::TempDir dir_;
  std::string path_ = MakeDesktopDatabase(dir_);
  std::shared_ptr<dao::Database> db_ = dao::Database::Open(FromUtf8(path_));
  clsPub pub_;
};

TEST_F(DesktopProbe, TablesAndStoredQueriesAreFoundByNameWithoutRegardToCase) {
  EXPECT_TRUE(pub_.ExistTableQueryDAO(db_, u"Orders"));
  EXPECT_TRUE(pub_.ExistTableQueryDAO(db_, u"oRDERS"));
  EXPECT_TRUE(pub_.ExistTableQueryDAO(db_, u"ÄrgerListe"));
  EXPECT_FALSE(pub_.ExistTableQueryDAO(db_, u"Customers"));
  EXPECT_FALSE(pub_.ExistTableQueryDAO(db_, u"Orders "));
  EXPECT_FALSE(pub_.ExistTableQueryDAO(db_, u"")) << "no item has an empty name";
  EXPECT_FALSE(pub_.ExistTableQueryDAO(db_, u"BigOrders")) << "a stored query is no table";

  EXPECT_TRUE(pub_.ExistTableQueryDAO(db_, u"BigOrders", true));
  EXPECT_TRUE(pub_.ExistTableQueryDAO(db_, u"bigorders", true));
  EXPECT_FALSE(pub_.ExistTableQueryDAO(db_, u"Orders", true)) << "a table is no stored query";
  EXPECT_FALSE(pub_.ExistTableQueryDAO(db_, u"Customers", true));
}

TEST_F(DesktopProbe, OnlyItemNotFoundMeansAbsent) {
  EXPECT_TRUE(pub_.ExistTableQueryDAO(nullptr, u"Customers")) << "an empty reference";
  EXPECT_TRUE(pub_.ExistTableQueryDAO(nullptr, u"Customers", true));
  db_->Close();
  EXPECT_TRUE(pub_.ExistTableQueryDAO(db_, u"Customers")) << "a closed database";
}

TEST_F(DesktopProbe, TheDatabaseAnswersDaoErrorsAndNames) {
  EXPECT_EQ(db_->TableDefs(u"orders")->Name(), u"Orders") << "the stored letter case";
  EXPECT_EQ(db_->QueryDefs(u"BIGORDERS")->TypeName(), u"QueryDef");
  EXPECT_EQ(db_->Name(), FromUtf8(path_));
  try {
    db_->QueryDefs(u"Orders");
    ADD_FAILURE() << "a table found among the stored queries";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 3265);
    EXPECT_EQ(e.description(), u"Item not found in this collection.");
  }
  db_->Close();
  EXPECT_KAVRIN_ERROR(db_->TableDefs(u"Orders"), dao::kObjectInvalid);

  testing::TempDir other;
  EXPECT_KAVRIN_ERROR(dao::Database::Open(FromUtf8(other.path() + "/none.db")),
                      errors::kProviderFailure);
}

TEST_F(DesktopProbe, LateBindingPassesTheDatabaseAsAnObject) {
  std::vector<Variant> args{Variant(std::shared_ptr<Dispatch>(db_)), Variant(u"BIGORDERS"),
                            Variant(true)};
  EXPECT_EQ(pub_.Invoke(u"ExistTableQueryDAO", InvokeKind::Method, args), Variant(true));
  std::vector<Variant> table{Variant(std::shared_ptr<Dispatch>(db_)), Variant(u"BigOrders")};
  EXPECT_EQ(pub_.Invoke(u"ExistTableQueryDAO", InvokeKind::Method, table), Variant(false));
  std::vector<Variant> nothing{Variant::Nothing(), Variant(u"Orders")};
  EXPECT_EQ(pub_.Invoke(u"ExistTableQueryDAO", InvokeKind::Method, nothing), Variant(true));
  std::vector<Variant> not_a_database{
      Variant(std::shared_ptr<Dispatch>(std::make_shared<clsPub>())), Variant(u"Orders")};
  EXPECT_KAVRIN_ERROR(pub_.Invoke(u"ExistTableQueryDAO", InvokeKind::Method, not_a_database),
                      errors::kTypeMismatch);

  // The database by name, as a script reaches it.
  std::vector<Variant> key{Variant(u"orders")};
  const Variant found = db_->Invoke(u"TableDefs", InvokeKind::PropertyGet, key);
  EXPECT_EQ(found.AsObject()->Get(u"Name"), Variant(u"Orders"));
  std::vector<Variant> missing{Variant(u"nope")};
  EXPECT_KAVRIN_ERROR(db_->Invoke(u"QueryDefs", InvokeKind::PropertyGet, missing),
                      dao::kItemNotFound);
}

}  // namespace
}  // namespace kavrin
