// CheckDirGrade: a typed code or name checked against the graded archives, on
// rows built by each test.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;
using GradedCheck = testing::ComponentTest;

TEST_F(GradedCheck, QueriedArchivesTryTheCodeBeforeTheName) {
  EXPECT_EQ(pub_.CheckDirGrade(u"   ", true, 7, true), u"");
  for (int16_t type : {-1, 0, 1, 2, 3, 5, 10, 23})
    EXPECT_EQ(pub_.CheckDirGrade(u"1", false, type), u"") << type;
  EXPECT_TRUE(Sent().empty()) << "nothing is asked for a blank text or another archive";
  EXPECT_EQ(pub_.CheckDirGrade(u"01", false, 7), u"");
  EXPECT_EQ(Sent(), Texts{u"InventoryClass"}) << "an archive without rows: the probe alone";

  Exec(
      "INSERT INTO InventoryClass (cInvCCode, cInvCName, bInvCEnd) VALUES ('01', 'Metals  ', 1),"
      " ('02', '01', 1), ('03', 'Wood', 1), ('04', 'Wood', 1), ('05', NULL, 1);"
      "INSERT INTO Code (cCode, cCode_Name, bEnd) VALUES ('1403', 'Raw materials', 1)");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirGrade(u"Wood", false, 7), u"03") << "the first of two named rows";
  EXPECT_EQ(Sent(),
            (Texts{u"InventoryClass", u"select * from inventoryclass where cinvccode='Wood'",
                   u"select * from inventoryclass where cinvcname='Wood'"}));
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 7), u"01") << "a code of one row, a name of another";
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 7, true), u"Metals  ") << "as stored, not trimmed";
  EXPECT_EQ(pub_.CheckDirGrade(u" Wood", false, 7), u"") << "a leading blank is looked up";
  EXPECT_EQ(pub_.CheckDirGrade(u"Raw materials", true, 15), u"1403");
  EXPECT_EQ(pub_.CheckDirGrade(u"05", true, 7), u"05") << "a Null name not answered is harmless";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"05", true, 7, true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"O'Brien", false, 7), errors::kProviderSyntax,
                      testing::EngineSource());
}

TEST_F(GradedCheck, EndRowsByCodeByNameAndByWalkingSameNamedRows) {
  Exec(
      "INSERT INTO Department (cDepCode, cDepName, bDepEnd) VALUES"
      " ('01', 'Sales', 0), ('0101', '01', 1), ('02', 'Works', NULL);"
      "INSERT INTO SettleStyle (cSSCode, cSSName, bSSEnd) VALUES"
      " ('1', 'Cash', 0), ('2', 'Cash', NULL), ('3', 'Cash', 1), ('5', 'Check', 0),"
      " ('6', 'CHECK', 1), ('7', 'Draft', 0), ('8', 'Draft ', 1), ('9', 'Bill', 0),"
      " ('10', 'BILL', 1), ('11', 'Wood', 0);"
      "INSERT INTO VendorClass (cVCCode, cVCName, bVCEnd) VALUES"
      " ('01', 'Metals', 0), ('02', 'Metals', 1), ('03', 'Wood', 0);"
      "INSERT INTO CustomerClass (cCCCode, cCCName, bCCEnd) VALUES"
      " ('01', 'Retail', 0), ('02', 'Retail', 0)");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 12), u"") << "a code that is no end row";
  EXPECT_EQ(Sent().size(), 2u) << "its text is not tried as a name";
  // A Null end flag is no end row by code, but an end row as the first named row.
  EXPECT_EQ(pub_.CheckDirGrade(u"02", true, 12), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"Works", true, 12), u"02");

  // Past a first named row that is no end row, the walk seeks an end row among
  // the rows found, comparing their names with the typed text exactly.
  EXPECT_EQ(pub_.CheckDirGrade(u"Cash", true, 6), u"3") << "a Null flag is no end row here";
  EXPECT_EQ(pub_.CheckDirGrade(u"Check", true, 6), u"") << "letter case ends the walk";
  EXPECT_EQ(pub_.CheckDirGrade(u"Draft", true, 6), u"") << "so does a trailing blank";
  EXPECT_EQ(pub_.CheckDirGrade(u"BILL", true, 6), u"10") << "not the first row's name";
  EXPECT_EQ(pub_.CheckDirGrade(u"Wood", true, 6), u"") << "it stops at the last row";
  EXPECT_EQ(pub_.CheckDirGrade(u"Metals", true, 8), u"02");
  // Vendor and customer classes read on past the last row.
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"Wood", true, 8), errors::kNoCurrentRecord,
                      sources::kAdoField);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"Retail", true, 9), errors::kNoCurrentRecord,
                      sources::kAdoField);
}

TEST_F(GradedCheck, StylesAndCostObjectsAreFoundInTheLoadedTable) {
  Exec(
      "INSERT INTO Rd_Style (cRdCode, cRdName, bRdEnd) VALUES"
      " ('01', 'Receipts', 0), ('0101', '01', 1), ('02', 'Issues', 0);"
      "INSERT INTO CostObj (cCode, cName, bEnd) VALUES ('01', 'Desks', 0), ('0101', 'Desks', 1)");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", false, 4), u"01");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 4), u"0101") << "the name is tried with the end clause";
  EXPECT_EQ(pub_.CheckDirGrade(u"Receipts", true, 4), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"issues", false, 4, true), u"Issues") << "as the column compares";
  EXPECT_EQ(pub_.CheckDirGrade(u"Desks", true, 22), u"0101");
  EXPECT_EQ(Sent(), (Texts{u"Rd_Style", u"Rd_Style", u"Rd_Style", u"Rd_Style", u"CostObj"}))
      << "no query by code or name";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"O'Brien", true, 22), errors::kCriteriaSyntax);
}

}  // namespace
}  // namespace kavrin
