// The code and business type of an adjustment-voucher line, on suite data.
#include <gtest/gtest.h>

#include <vector>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using VoucherLinks = testing::ComponentTest;

TEST_F(VoucherLinks, VoucherLinesAnswerTheirCodeAndBusinessType) {
  Exec(
      "INSERT INTO JustInVouchs (AutoID, cJVCode, CorID) VALUES (10, 'JV0001', 100),"
      " (12, NULL, NULL), (13, 'JV0002', 101);"
      "INSERT INTO RdRecords (AutoID, ID) VALUES (100, 1), (101, 2);"
      "INSERT INTO RdRecord (ID, cBusType) VALUES (1, 'Purchase'), (2, NULL);"
      "INSERT INTO IA_Subsidiary (AutoID, JustID, cBusType) VALUES"
      " (1, 10, 'Adjust in'), (2, 10, 'Adjust out'), (3, 13, NULL)");
  EXPECT_EQ(pub_.JustID2Code(10), u"JV0001");
  EXPECT_EQ(pub_.JustID2Code(99), u"0") << "the text 0 for a missing line";
  EXPECT_KAVRIN_ERROR(pub_.JustID2Code(12), errors::kInvalidUseOfNull);

  EXPECT_EQ(pub_.JustIDs2CorBusType(10), u"Adjust in") << "the first ledger entry listed";
  EXPECT_EQ(pub_.JustIDs2CorBusType(13), u"") << "a Null business type";
  EXPECT_EQ(pub_.JustIDs2CorBusType(10, true), u"Purchase");
  EXPECT_EQ(pub_.JustIDs2CorBusType(13, true), u"") << "a Null business type";
  std::vector<Variant> omitted{int32_t{10}};
  EXPECT_EQ(pub_.Call(u"JustIDs2CorBusType", omitted), Variant(u"Adjust in"));
}

}  // namespace
}  // namespace kavrin
