// Warehouses and departments: value styles, links both ways, and the list of
// warehouses a form offers.
#include <gtest/gtest.h>

#include <vector>

#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"

namespace kavrin {
namespace {

using testing::FakeList;

String Padded(StringView code, size_t spaces, StringView name) {
  return String(code) + String(spaces, u' ') + String(name);
}

class WarehouseDepartments : public testing::ComponentTest {
 protected:
  WarehouseDepartments() {
    Exec(
        "INSERT INTO Warehouse (cWhCode, cWhName, cDepCode, cWhValueStyle) VALUES"
        " ('02', 'Raw materials', 'D1', 'FIFO'),"
        " ('01', 'Finished goods', 'D1', 'FIFO'),"
        " ('03', 'Loose', NULL, 'Average'),"
        " ('04', NULL, 'D2', NULL),"
        " ('123456789012345', 'Fifteen', 'D3', 'Average');");
  }

  std::shared_ptr<FakeList> list_ = std::make_shared<FakeList>(std::vector<String>{u"old"});
  Variant cbo_{std::shared_ptr<Dispatch>(list_)};
};

TEST_F(WarehouseDepartments, WarehouseWrappersAnswerTheColumnOrEmpty) {
  EXPECT_EQ(pub_.WhCodeToValueStyle(u"01"), u"FIFO");
  EXPECT_EQ(Sent().back(), u"select cWhValueStyle as name from Warehouse where cWhCode='01'");
  EXPECT_EQ(pub_.WhCodeToDep(u"01"), u"D1");
  EXPECT_EQ(Sent().back(), u"select cDepCode as name from Warehouse where cWhCode='01'");

  EXPECT_EQ(pub_.WhCodeToDep(u"03"), u"") << "a warehouse without a department";
  EXPECT_EQ(pub_.WhCodeToValueStyle(u"04"), u"");
  for (const String code : {u"99", u"0'1"}) {
    EXPECT_EQ(pub_.WhCodeToValueStyle(code), u"");
    EXPECT_EQ(pub_.WhCodeToDep(code), u"");
  }
}

TEST_F(WarehouseDepartments, DepartmentLookupsAnswerTheFirstWarehouseOrEmpty) {
  EXPECT_EQ(pub_.DepCodeToValueStyle(u"D1"), u"FIFO");
  EXPECT_EQ(Sent().back(), u"SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode='D1'");
  EXPECT_EQ(pub_.DepCodeToValueStyle(u"D9"), u"");
  EXPECT_KAVRIN_ERROR(pub_.DepCodeToValueStyle(u"D2"), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.DepCodeToValueStyle(u"D'1"), errors::kProviderSyntax);

  EXPECT_EQ(pub_.DepCode2WhCode(u"D2"), u"04");
  EXPECT_EQ(Sent().back(), u"SELECT cWhCode FROM Warehouse WHERE cDepCode='D2'");
  EXPECT_EQ(pub_.DepCode2WhCode(u"d3"), u"123456789012345") << "the database ignores letter case";
  EXPECT_EQ(pub_.DepCode2WhCode(u"D9"), u"");
  EXPECT_KAVRIN_ERROR(pub_.DepCode2WhCode(u"D'1"), errors::kProviderSyntax);
}

TEST_F(WarehouseDepartments, FillCboCKListsWarehousesInACodeColumnFifteenWide) {
  pub_.FillCboCK(cbo_, u"D1");
  EXPECT_EQ(Sent().back(),
            u"SELECT cWhCode,cWhName FROM WareHouse WHERE cDepCode='D1' ORDER BY cWhCode");
  EXPECT_EQ(list_->items, (std::vector<String>{Padded(u"01", 13, u"Finished goods"),
                                               Padded(u"02", 13, u"Raw materials")}));

  pub_.FillCboCK(cbo_);
  EXPECT_EQ(Sent().back(), u"SELECT cWhCode,cWhName FROM WareHouse ORDER BY cWhCode");
  EXPECT_EQ(list_->items,
            (std::vector<String>{Padded(u"01", 13, u"Finished goods"),
                                 Padded(u"02", 13, u"Raw materials"), Padded(u"03", 13, u"Loose"),
                                 Padded(u"04", 13, u""), u"123456789012345Fifteen"}))
      << "a Null name adds nothing; a code of fifteen leaves no blank";

  pub_.FillCboCK(cbo_, u"D9");
  EXPECT_TRUE(list_->items.empty()) << "a department without warehouses";
  EXPECT_EQ(list_->clears, 3);
}

TEST_F(WarehouseDepartments, FillCboCKKeepsTheItemsAddedBeforeAFailure) {
  Exec("INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('9999999999999999', 'Sixteen');");
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(cbo_), errors::kInvalidProcedureCall);
  ASSERT_EQ(list_->items.size(), 5u);
  EXPECT_EQ(list_->items.back(), u"123456789012345Fifteen");

  list_->items = {u"old"};
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(cbo_, u"D'1"), errors::kProviderSyntax);
  EXPECT_TRUE(list_->items.empty()) << "cleared before the query";
}

TEST_F(WarehouseDepartments, FillCboCKFailsAtANullCode) {
  // A suite database whose warehouse codes may be Null.
  Exec(
      "DROP TABLE Warehouse;"
      "CREATE TABLE Warehouse (cWhCode VARCHAR(20), cWhName VARCHAR(40), cDepCode VARCHAR(12));"
      "INSERT INTO Warehouse (cWhCode, cWhName, cDepCode) VALUES (NULL, 'Nameless', 'D1');");
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(cbo_, u"D1"), errors::kInvalidUseOfNull);
  EXPECT_TRUE(list_->items.empty());
}

TEST_F(WarehouseDepartments, FillCboCKNeedsAListControl) {
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(Variant(u"cbo")), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(Variant::Nothing()), errors::kObjectNotSet);
  auto no_clear = std::make_shared<FakeList>(std::vector<String>{u"old"}, false, true);
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(Variant(std::shared_ptr<Dispatch>(no_clear))),
                      errors::kMemberNotFound);
  EXPECT_TRUE(Sent().empty()) << "nothing is asked of the database before the list is cleared";

  auto no_add = std::make_shared<FakeList>(std::vector<String>{u"old"}, true, false);
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(Variant(std::shared_ptr<Dispatch>(no_add))),
                      errors::kMemberNotFound);
  EXPECT_TRUE(no_add->items.empty());
}

TEST_F(WarehouseDepartments, WithoutADatabaseOnlyTheWrappersStaySilent) {
  clsPub fresh;  // its default kit is unconnected
  EXPECT_EQ(fresh.WhCodeToValueStyle(u"01"), u"");
  EXPECT_EQ(fresh.WhCodeToDep(u"01"), u"");
  EXPECT_KAVRIN_ERROR(fresh.DepCodeToValueStyle(u"D1"), errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(fresh.DepCode2WhCode(u"D1"), errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(fresh.FillCboCK(cbo_), errors::kNoConnection);
  EXPECT_TRUE(list_->items.empty());
}

}  // namespace
}  // namespace kavrin
