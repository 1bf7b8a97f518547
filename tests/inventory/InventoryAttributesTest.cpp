// An item's unit, reference cost, class, batch tracking and yes/no columns.
#include <gtest/gtest.h>

#include <vector>

#include "kavrin/Host.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"

namespace kavrin {
namespace {

class InventoryAttributes : public testing::ComponentTest {
 protected:
  InventoryAttributes() {
    Exec(
        "INSERT INTO Inventory (cInvCode, cInvName, cInvCCode, cInvM_Unit, iInvRCost, bTrack,"
        " bSale, bPurchase) VALUES"
        " ('01', 'True', '0101', 'kg ', 12.5, 1, 1, 0),"
        " ('02', 'Bolt', NULL, NULL, NULL, NULL, NULL, 1),"
        " ('03', 'Nut', '0102', 'pcs', 0, 0, 0, 1);");
  }

  testing::ScopedUiHost ui_;
};

TEST_F(InventoryAttributes, WrappersAnswerTheColumnOrTheirDefault) {
  EXPECT_EQ(pub_.InvCodeToUnit(u"01"), u"kg ") << "as stored, untrimmed";
  EXPECT_EQ(Sent().back(), u"select cInvM_Unit as name from Inventory where cInvCode='01'");
  EXPECT_EQ(pub_.InvCodeToUnitPrice(u"01"), 12.5);
  EXPECT_EQ(Sent().back(), u"select iInvRCost as name from Inventory where cInvCode='01'");
  EXPECT_EQ(pub_.InvCodeToClass(u"01"), u"0101");
  EXPECT_EQ(Sent().back(), u"select cInvCCode as name from Inventory where cInvCode='01'");

  // A missing item, a Null column and a rejected query all give the default.
  for (const String code : {u"99", u"02", u"0'1"}) {
    EXPECT_EQ(pub_.InvCodeToUnit(code), u"");
    EXPECT_EQ(pub_.InvCodeToUnitPrice(code), 0.0);
    EXPECT_EQ(pub_.InvCodeToClass(code), u"");
  }
  EXPECT_TRUE(ui_->shown.empty());
}

TEST_F(InventoryAttributes, InvIsBatchAnswersTheSwitchAsStoredOrFalse) {
  EXPECT_EQ(pub_.InvIsBatch(u"01"), Variant(true));
  EXPECT_EQ(Sent().back(), u"SELECT bTrack FROM Inventory WHERE cInvCode='01'");
  EXPECT_EQ(pub_.InvIsBatch(u"03"), Variant(false));
  EXPECT_TRUE(pub_.InvIsBatch(u"02").IsNull()) << "a present item with a Null switch";
  EXPECT_EQ(pub_.InvIsBatch(u"99"), Variant(false)) << "a missing item: Boolean false, not Null";

  EXPECT_EQ(pub_.InvIsBatch(u"01  "), Variant(true))
      << "trailing blanks compare as the database does";
  EXPECT_EQ(Sent().back(), u"SELECT bTrack FROM Inventory WHERE cInvCode='01  '");
  EXPECT_KAVRIN_ERROR(pub_.InvIsBatch(u"0'1"), errors::kProviderSyntax);
}

TEST_F(InventoryAttributes, InvCodeIsTorFReadsTheFirstColumnOrShowsNotFound) {
  EXPECT_TRUE(pub_.InvCodeIsTorF(u"01", u"bSale"));
  EXPECT_EQ(Sent().back(), u"SELECT bSale FROM Inventory WHERE cInvCode='01'");
  EXPECT_FALSE(pub_.InvCodeIsTorF(u"01", u"bPurchase"));
  EXPECT_FALSE(pub_.InvCodeIsTorF(u"01", u"bPurchase,bSale")) << "the first of two columns";
  EXPECT_TRUE(pub_.InvCodeIsTorF(u"01", u"cInvName")) << "the text True";
  EXPECT_TRUE(pub_.InvCodeIsTorF(u"01", u"iInvRCost")) << "any nonzero number";
  EXPECT_TRUE(ui_->shown.empty());

  EXPECT_FALSE(pub_.InvCodeIsTorF(u"99", u"bSale"));
  ASSERT_EQ(ui_->shown.size(), 1u);
  EXPECT_EQ(ui_->shown[0].prompt, u"该存货没有找到！");
  EXPECT_EQ(ui_->shown[0].buttons, vbOKOnly);
  EXPECT_EQ(ui_->shown[0].title, DefaultMessageTitle());
}

TEST_F(InventoryAttributes, InvCodeIsTorFFailsWithoutAMessage) {
  EXPECT_KAVRIN_ERROR(pub_.InvCodeIsTorF(u"02", u"bSale"), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.InvCodeIsTorF(u"02", u"cInvName"), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(pub_.InvCodeIsTorF(u"01", u"bNoSuchColumn"), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(pub_.InvCodeIsTorF(u"0'1", u"bSale"), errors::kProviderSyntax);
  EXPECT_TRUE(ui_->shown.empty());
}

TEST_F(InventoryAttributes, WithoutADatabaseOnlyTheWrappersStaySilent) {
  clsPub fresh;  // its default kit is unconnected
  EXPECT_EQ(fresh.InvCodeToUnit(u"01"), u"");
  EXPECT_EQ(fresh.InvCodeToUnitPrice(u"01"), 0.0);
  EXPECT_EQ(fresh.InvCodeToClass(u"01"), u"");
  EXPECT_KAVRIN_ERROR(fresh.InvIsBatch(u"01"), errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(fresh.InvCodeIsTorF(u"01", u"bSale"), errors::kNoConnection);
  EXPECT_TRUE(ui_->shown.empty());
}

}  // namespace
}  // namespace kavrin
