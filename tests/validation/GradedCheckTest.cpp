// CheckDirGrade on graded archives built by each test.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

// The kit's answer to criteria it cannot read, such as a text with a quote.
constexpr int32_t kCriteriaSyntax = 3077;

using GradedCheck = testing::ComponentTest;
using Texts = std::vector<String>;

TEST_F(GradedCheck, BlankTextsAndUnknownArchivesAnswerEmptyWithoutTheDatabase) {
  Exec("INSERT INTO SettleStyle (cSSCode, cSSName, bSSEnd) VALUES ('1', 'Cash', 1)");
  for (int16_t type : {4, 6, 7, 8, 9, 12, 15, 22}) {
    EXPECT_EQ(pub_.CheckDirGrade(u"", false, type), u"");
    EXPECT_EQ(pub_.CheckDirGrade(u"   ", true, type, true), u"");
  }
  for (int16_t type : {-1, 0, 1, 2, 3, 5, 10, 23}) {
    EXPECT_EQ(pub_.CheckDirGrade(u"1", false, type), u"");
  }
  EXPECT_TRUE(Sent().empty());

  clsPub unconnected;  // would fail with 3709 at its first query
  EXPECT_EQ(unconnected.CheckDirGrade(u"  ", false, 6), u"");
  EXPECT_EQ(unconnected.CheckDirGrade(u"1", false, 5), u"");
  EXPECT_KAVRIN_ERROR(unconnected.CheckDirGrade(u"1", false, 6), errors::kNoConnection);
}

TEST_F(GradedCheck, AnEmptyArchiveAnswersEmptyAfterTheProbeAlone) {
  const std::pair<int16_t, const char16_t*> archives[] = {
      {4, u"Rd_Style"},      {6, u"SettleStyle"}, {7, u"InventoryClass"}, {8, u"VendorClass"},
      {9, u"CustomerClass"}, {12, u"Department"}, {15, u"Code"},          {22, u"CostObj"}};
  for (const auto& [type, table] : archives) {
    ClearSent();
    EXPECT_EQ(pub_.CheckDirGrade(u"01", false, type), u"") << "type " << type;
    EXPECT_EQ(Sent(), Texts{table});
  }
}

TEST_F(GradedCheck, QueryGroupTriesTheCodeBeforeTheName) {
  Exec(
      "INSERT INTO InventoryClass (cInvCCode, cInvCName, bInvCEnd) VALUES"
      " ('01', 'Metals  ', 1), ('02', '01', 1), ('03', 'Wood', 1), ('04', 'Wood', 1)");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 7), u"01") << "a code of one row, a name of another";
  EXPECT_EQ(Sent(),
            (Texts{u"InventoryClass", u"select * from inventoryclass where cinvccode='01'"}));
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 7, true), u"Metals  ") << "as stored, not trimmed";

  ClearSent();
  EXPECT_EQ(pub_.CheckDirGrade(u"Wood", false, 7), u"03") << "the first of two named rows";
  EXPECT_EQ(Sent(),
            (Texts{u"InventoryClass", u"select * from inventoryclass where cinvccode='Wood'",
                   u"select * from inventoryclass where cinvcname='Wood'"}));
  EXPECT_EQ(pub_.CheckDirGrade(u" Wood", false, 7), u"") << "a leading blank is looked up";
  EXPECT_EQ(pub_.CheckDirGrade(u"Plastics", false, 7), u"");

  ClearSent();
  Exec("INSERT INTO Code (cCode, cCode_Name, bEnd) VALUES ('1403', 'Raw materials', 1)");
  EXPECT_EQ(pub_.CheckDirGrade(u"Raw materials", true, 15), u"1403");
  EXPECT_EQ(Sent(), (Texts{u"Code", u"select * from code where ccode='Raw materials'",
                           u"select * from code where ccode_name='Raw materials'"}));
}

TEST_F(GradedCheck, QueryGroupEndRowDemands) {
  // Department 01 is no end row; department 0101 is an end row named 01.
  Exec(
      "INSERT INTO Department (cDepCode, cDepName, bDepEnd) VALUES"
      " ('01', 'Sales', 0), ('0101', '01', 1), ('02', 'Works', NULL), ('03', 'Stores', NULL)");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", false, 12), u"01");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 12), u"") << "the name is not tried";
  EXPECT_EQ(Sent().size(), 2u);
  EXPECT_EQ(pub_.CheckDirGrade(u"Sales", true, 12), u"");

  // A Null end flag is no end row by code, but an end row by name.
  EXPECT_EQ(pub_.CheckDirGrade(u"02", true, 12), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"Works", true, 12), u"02");
  EXPECT_EQ(pub_.CheckDirGrade(u"Stores", true, 12, true), u"Stores");
}

TEST_F(GradedCheck, TheWalkOverSameNamedRowsSeeksAnEndRow) {
  Exec(
      "INSERT INTO SettleStyle (cSSCode, cSSName, bSSEnd) VALUES"
      " ('1', 'Cash', 0), ('2', 'Cash', NULL), ('3', 'Cash', 1), ('4', 'Cash', 1),"
      " ('5', 'Check', 0), ('6', 'CHECK', 1), ('7', 'Draft', 0), ('8', 'Draft ', 1),"
      " ('9', 'Bill', 0), ('10', 'BILL', 1)");
  EXPECT_EQ(pub_.CheckDirGrade(u"Cash", true, 6), u"3") << "a Null flag is no end row in the walk";
  EXPECT_EQ(pub_.CheckDirGrade(u"Cash", true, 6, true), u"Cash");
  EXPECT_EQ(pub_.CheckDirGrade(u"Cash", false, 6), u"1");

  // The database finds names whatever their case and trailing blanks; the walk
  // compares exactly.
  EXPECT_EQ(pub_.CheckDirGrade(u"Check", true, 6), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"Draft", true, 6), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"Bill", true, 6), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"BILL", true, 6), u"10")
      << "later rows are compared with the typed text, not with the first row's name";
  EXPECT_EQ(pub_.CheckDirGrade(u"bill", false, 6, true), u"Bill")
      << "the first row is taken as it stands";

  Exec("INSERT INTO SettleStyle (cSSCode, cSSName, bSSEnd) VALUES ('11', 'Note', 0)");
  EXPECT_EQ(pub_.CheckDirGrade(u"Note", true, 6), u"") << "the walk runs out of rows";
}

TEST_F(GradedCheck, VendorAndCustomerClassWalksFailPastTheLastRow) {
  Exec(
      "INSERT INTO VendorClass (cVCCode, cVCName, bVCEnd) VALUES"
      " ('01', 'Metals', 0), ('02', 'Metals', 1), ('03', 'Wood', 0), ('04', 'Paper', 0),"
      " ('05', 'PAPER', 1);"
      "INSERT INTO CustomerClass (cCCCode, cCCName, bCCEnd) VALUES"
      " ('01', 'Retail', 0), ('02', 'Retail', 0), ('03', 'Export', 0), ('04', 'Export', 1);"
      "INSERT INTO SettleStyle (cSSCode, cSSName, bSSEnd) VALUES ('1', 'Wood', 0)");
  EXPECT_EQ(pub_.CheckDirGrade(u"Metals", true, 8), u"02");
  EXPECT_EQ(pub_.CheckDirGrade(u"Paper", true, 8), u"") << "a name differing in case ends it";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"Wood", true, 8), errors::kNoCurrentRecord);
  EXPECT_EQ(pub_.CheckDirGrade(u"Wood", true, 6), u"") << "settlement styles stop at the end";
  EXPECT_EQ(pub_.CheckDirGrade(u"Wood", false, 8), u"03");

  EXPECT_EQ(pub_.CheckDirGrade(u"Export", true, 9, true), u"Export");
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"Retail", true, 9), errors::kNoCurrentRecord);
}

TEST_F(GradedCheck, FindGroupSearchesTheLoadedTable) {
  // Style 01 is no end row; style 0101 is an end row named 01.
  Exec(
      "INSERT INTO Rd_Style (cRdCode, cRdName, bRdEnd) VALUES"
      " ('01', 'Receipts', 0), ('0101', '01', 1), ('02', 'Issues', 0), ('0201', 'Issues', 1);"
      "INSERT INTO CostObj (cCode, cName, bEnd) VALUES ('01', 'Desks', 0), ('0101', 'Desks', 1)");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", false, 4), u"01");
  EXPECT_EQ(Sent(), Texts{u"Rd_Style"}) << "no query by code or name";
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 4), u"0101") << "the name is tried with the end clause";
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 4, true), u"01");
  EXPECT_EQ(pub_.CheckDirGrade(u"issues", false, 4, true), u"Issues") << "as the column compares";
  EXPECT_EQ(pub_.CheckDirGrade(u"Issues", true, 4), u"0201");
  EXPECT_EQ(pub_.CheckDirGrade(u"Receipts", true, 4), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"Transfers", false, 4), u"");

  ClearSent();
  EXPECT_EQ(pub_.CheckDirGrade(u"Desks", false, 22), u"01");
  EXPECT_EQ(pub_.CheckDirGrade(u"Desks", true, 22), u"0101");
  EXPECT_EQ(Sent(), (Texts{u"CostObj", u"CostObj"}));
}

TEST_F(GradedCheck, NullsAndQuotesFailTheCall) {
  Exec(
      "INSERT INTO Code (cCode, cCode_Name, bEnd) VALUES ('1403', NULL, 1);"
      "INSERT INTO CostObj (cCode, cName, bEnd) VALUES ('01', NULL, 1)");
  EXPECT_EQ(pub_.CheckDirGrade(u"1403", true, 15), u"1403")
      << "a Null name not answered is harmless";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"1403", true, 15, true), errors::kInvalidUseOfNull);
  EXPECT_EQ(pub_.CheckDirGrade(u"01", false, 22), u"01");
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"01", false, 22, true), errors::kInvalidUseOfNull);

  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"O'Brien", false, 15), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"O'Brien", true, 22), kCriteriaSyntax);
}

}  // namespace
}  // namespace kavrin
