// From adjustment-voucher lines to their voucher code and business type.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

class VoucherLinks : public testing::ComponentTest {
 protected:
  VoucherLinks() {
    Exec(
        "INSERT INTO JustInVouchs (AutoID, cJVCode, CorID) VALUES"
        " (10, 'JV0001', 100), (11, 'JV0001', 999), (12, NULL, NULL), (13, 'JV0002', 101);"
        "INSERT INTO RdRecords (AutoID, ID) VALUES (100, 1), (101, 2);"
        "INSERT INTO RdRecord (ID, cCode, cBusType) VALUES (1, 'RK01', 'Purchase'), (2, 'RK02', "
        "NULL);"
        "INSERT INTO IA_Subsidiary (AutoID, JustID, cBusType) VALUES"
        " (1, 10, 'Adjust in'), (2, 10, 'Adjust out'), (3, 13, NULL)");
  }
};

TEST_F(VoucherLinks, JustID2CodeAnswersTheTextZeroForAMissingLine) {
  EXPECT_EQ(pub_.JustID2Code(10), u"JV0001");
  EXPECT_EQ(Sent().back(), u"SELECT cJVCode FROM JustInVouchs WHERE AutoID=10");
  EXPECT_EQ(pub_.JustID2Code(99), u"0");
  EXPECT_EQ(pub_.JustID2Code(0), u"0");
  EXPECT_EQ(pub_.JustID2Code(-5), u"0");
  EXPECT_EQ(Sent().back(), u"SELECT cJVCode FROM JustInVouchs WHERE AutoID=-5");
  EXPECT_KAVRIN_ERROR(pub_.JustID2Code(12), errors::kInvalidUseOfNull);

  std::vector<Variant> args{Variant(u"10")};
  EXPECT_EQ(pub_.Invoke(u"JustID2Code", InvokeKind::Method, args), Variant(u"JV0001"));
}

TEST_F(VoucherLinks, JustIDs2CorBusTypeReadsTheLedgerOrTheCorrespondingVoucher) {
  EXPECT_EQ(pub_.JustIDs2CorBusType(10), u"Adjust in") << "the first ledger entry listed";
  EXPECT_EQ(Sent().back(), u"SELECT cBusType FROM IA_Subsidiary WHERE JustID=10");
  EXPECT_EQ(pub_.JustIDs2CorBusType(11), u"") << "no ledger entry";
  EXPECT_EQ(pub_.JustIDs2CorBusType(13), u"") << "a Null business type";

  EXPECT_EQ(pub_.JustIDs2CorBusType(10, true), u"Purchase");
  const String through_voucher =
      u"SELECT RdRecord.cBusType FROM RdRecord INNER JOIN (RdRecords INNER JOIN "
      u"JustInVouchs ON RdRecords.AutoID=JustInVouchs.CorID) ON RdRecord.ID=RdRecords.ID "
      u"WHERE JustInVouchs.AutoID=";
  EXPECT_EQ(Sent().back(), through_voucher + u"10");
  EXPECT_EQ(pub_.JustIDs2CorBusType(11, true), u"") << "the voucher line is gone";
  EXPECT_EQ(pub_.JustIDs2CorBusType(12, true), u"") << "no corresponding line";
  EXPECT_EQ(pub_.JustIDs2CorBusType(13, true), u"") << "a Null business type";
  EXPECT_EQ(pub_.JustIDs2CorBusType(-1, true), u"");
  EXPECT_EQ(Sent().back(), through_voucher + u"-1");

  std::vector<Variant> omitted{int32_t{10}};
  EXPECT_EQ(pub_.Invoke(u"JustIDs2CorBusType", InvokeKind::Method, omitted), Variant(u"Adjust in"));
  std::vector<Variant> cor{int32_t{10}, int32_t{1}};
  EXPECT_EQ(pub_.Invoke(u"JustIDs2CorBusType", InvokeKind::Method, cor), Variant(u"Purchase"))
      << "any nonzero number means true";
}

TEST_F(VoucherLinks, FailuresReachTheCaller) {
  clsPub unconnected;
  EXPECT_KAVRIN_ERROR(unconnected.JustID2Code(10), errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(unconnected.JustIDs2CorBusType(10, true), errors::kNoConnection);
}

}  // namespace
}  // namespace kavrin
