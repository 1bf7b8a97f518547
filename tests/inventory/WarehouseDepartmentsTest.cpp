// Warehouses and departments: value styles, links both ways, the list of
// warehouses a form offers, and an item's heads in a warehouse.
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"

namespace kavrin {
namespace {

using testing::FakeList;

class WarehouseDepartments : public testing::ComponentTest {
 protected:
  WarehouseDepartments() {
    Exec(
        "INSERT INTO Warehouse (cWhCode, cWhName, cDepCode, cWhValueStyle) VALUES"
        " ('02', 'Raw materials', 'D1', 'FIFO'), ('01', 'Finished goods', 'D1', 'FIFO'),"
        " ('03', 'Loose', NULL, 'Average'), ('04', NULL, 'D2', NULL),"
        " ('123456789012345', 'Fifteen', 'D3', 'Average')");
  }

  std::shared_ptr<FakeList> list_ = std::make_shared<FakeList>(std::vector<String>{u"old"});
  Variant cbo_{std::shared_ptr<Dispatch>(list_)};
};

TEST_F(WarehouseDepartments, LookupsBetweenWarehousesAndDepartments) {
  EXPECT_EQ(pub_.WhCodeToValueStyle(u"01"), u"FIFO");
  EXPECT_EQ(pub_.WhCodeToDep(u"01"), u"D1");
  EXPECT_EQ(pub_.WhCodeToDep(u"03"), u"") << "a Null column";
  EXPECT_EQ(pub_.WhCodeToValueStyle(u"0'1"), u"") << "a rejected query";

  EXPECT_EQ(pub_.DepCodeToValueStyle(u"D1"), u"FIFO");
  EXPECT_EQ(pub_.DepCodeToValueStyle(u"D9"), u"");
  EXPECT_KAVRIN_ERROR(pub_.DepCodeToValueStyle(u"D2"), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.DepCodeToValueStyle(u"D'1"), errors::kProviderSyntax,
                      testing::EngineSource());
  EXPECT_EQ(pub_.DepCode2WhCode(u"D2"), u"04");
  EXPECT_EQ(pub_.DepCode2WhCode(u"D9"), u"");
}

TEST_F(WarehouseDepartments, FillCboCKListsWarehousesInACodeColumnFifteenWide) {
  pub_.FillCboCK(cbo_);
  EXPECT_EQ(Sent().back(), u"SELECT cWhCode,cWhName FROM WareHouse ORDER BY cWhCode");
  EXPECT_EQ(
      list_->items,
      (std::vector<String>{u"01             Finished goods", u"02             Raw materials",
                           u"03             Loose", u"04             ", u"123456789012345Fifteen"}))
      << "a Null name adds nothing; a code of fifteen leaves no blank";

  // A code of sixteen fails once the rows before it are in the list.
  Exec("INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('9999999999999999', 'Sixteen')");
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(cbo_), errors::kInvalidProcedureCall);
  EXPECT_EQ(list_->items.size(), 5u);

  ClearSent();
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(Variant(u"cbo")), errors::kObjectRequired);
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(Variant::Nothing()), errors::kObjectNotSet);
  auto no_clear = std::make_shared<FakeList>(std::vector<String>{}, false);
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(Variant(std::shared_ptr<Dispatch>(no_clear))),
                      errors::kMemberNotFound, no_clear->TypeName());
  EXPECT_TRUE(Sent().empty()) << "the list is cleared before the database is asked";
}

TEST_F(WarehouseDepartments, FillCboCKFailsAtANullCode) {
  // A warehouse table whose codes may be Null.
  Exec(
      "DROP TABLE Warehouse;"
      "CREATE TABLE Warehouse (cWhCode VARCHAR(20), cWhName VARCHAR(40), cDepCode VARCHAR(12));"
      "INSERT INTO Warehouse (cWhCode, cWhName, cDepCode) VALUES (NULL, 'Nameless', 'D1');");
  EXPECT_KAVRIN_ERROR(pub_.FillCboCK(cbo_, u"D1"), errors::kInvalidUseOfNull);
  EXPECT_TRUE(list_->items.empty());
}

// The inventory head and the difference head.
using Pair = std::pair<String, String>;

// The scheme query, then the first `tried` of the five settings for warehouse
// `wh`, class `cls` and item `inv`, in the order they are tried.
std::vector<String> Sequence(const String& wh, const String& cls, const String& inv, size_t tried) {
  const String select = u" Select cInvHead,cDifHead from IA_HeadSet Where ";
  const std::vector<String> texts{
      u"SELECT * FROM AccInformation WHERE cSysID='AA' AND cName='cGoodClass'",
      select + u"  cwhcode='" + wh + u" '  And cinvcode=substring('" + inv +
          u"',1, len(cInvCode)) ",
      select + u" cwhcode is null and  cinvcode=substring('" + inv + u"',1, len(cInvCode)) ",
      select + u"  cwhcode='" + wh + u" '  And cinvccode=substring('" + cls +
          u"',1, len(cinvccode)) ",
      select + u"  cwhcode is null and cinvccode=substring('" + cls + u"',1, len(cinvccode)) ",
      select + u"  cinvcode is null and cwhcode='" + wh + u"'",
  };
  return {texts.begin(), texts.begin() + 1 + tried};
}

using DifferenceHeads = testing::ComponentTest;

TEST_F(DifferenceHeads, TheMostSpecificSettingAnswersAndNothingLeavesTheOutputs) {
  Exec(
      "INSERT INTO IA_HeadSet (cWhCode, cInvCode, cInvCCode, cInvHead, cDifHead) VALUES"
      " ('01', '01', NULL, 'A', 'B'),"     // warehouse 01, item prefix 01
      " (NULL, '0101', NULL, 'C', 'D'),"   // any warehouse, item prefix 0101
      " ('02', NULL, '03', 'E', 'F'),"     // warehouse 02, class prefix 03
      " (NULL, NULL, '0301', 'G', 'H'),"   // any warehouse, class prefix 0301
      " ('05', NULL, '99', 'I', NULL);");  // warehouse 05, no item setting
  // Warehouse, class and item; the settings tried; the heads found.
  const std::tuple<const char16_t*, const char16_t*, const char16_t*, size_t, Pair> cases[] = {
      // This warehouse's item setting wins over a longer prefix for any warehouse.
      {u"01", u"0301", u"010105", 1, {u"A", u"B"}},
      {u"02", u"0301", u"010105", 2, {u"C", u"D"}},
      // This warehouse's class setting wins over a longer class prefix.
      {u"02", u"0301", u"020202", 3, {u"E", u"F"}},
      {u"04", u"0301", u"020202", 4, {u"G", u"H"}},
      // A warehouse row set for another class answers; a Null head is empty.
      {u"05", u"0501", u"020202", 5, {u"I", u""}},
      // Nothing applies: the caller's values stay.
      {u"06", u"0501", u"020202", 5, {u"before", u"before"}}};
  for (const auto& [wh, cls, inv, tried, expected] : cases) {
    ClearSent();
    Pair heads{u"before", u"before"};
    pub_.GetInvDifHead(wh, cls, inv, heads.first, heads.second);
    EXPECT_EQ(heads, expected) << ToUtf8(wh);
    EXPECT_EQ(Sent(), Sequence(wh, cls, inv, tried)) << ToUtf8(wh);
  }

  // By name, an omitted output receives nothing.
  std::vector<Variant> args{u"01", u"0301", u"010105", u"x", Variant::Missing()};
  pub_.Call(u"GetInvDifHead", args);
  EXPECT_EQ(args[3], Variant(u"A"));
  EXPECT_TRUE(args[4].IsMissing());

  // A failure leaves the outputs and stops the search.
  Pair heads{u"before", u"before"};
  EXPECT_KAVRIN_ERROR(pub_.GetInvDifHead(u"0'1", u"0301", u"010105", heads.first, heads.second),
                      errors::kProviderSyntax, testing::EngineSource());
  ClearSent();
  EXPECT_KAVRIN_ERROR(pub_.GetInvDifHead(u"02", u"03'01", u"020202", heads.first, heads.second),
                      errors::kProviderSyntax, testing::EngineSource());
  EXPECT_EQ(Sent().size(), 4u) << "the scheme, two item settings, the rejected class setting";
  EXPECT_EQ(heads, Pair(u"before", u"before"));
}

}  // namespace
}  // namespace kavrin
