// CheckDirNoGrade and CheckInv on flat archives built by each test.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;

class UngradedChecks : public testing::ComponentTest {
 protected:
  UngradedChecks() {
    Exec(
        "INSERT INTO Inventory (cInvCode, cInvName) VALUES"
        " ('A1', 'Bolt'), ('B2', 'Nut  '), ('C3', 'A1'), ('D4', 'Nut'), ('E5', NULL);"
        "INSERT INTO Vendor (cVenCode, cVenName, cVenAbbName) VALUES"
        " ('V1', 'Northern Steel Works', 'NSW');"
        "INSERT INTO Customer (cCusCode, cCusName, cCusAbbName) VALUES"
        " ('C1', 'Harbour Traders Ltd', 'Harbour');"
        "INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('W1', 'Main');"
        "INSERT INTO Person (cPersonCode, cPersonName) VALUES ('P1', 'Li Wei')");
  }
};

TEST_F(UngradedChecks, BlankTextsAndUnknownArchivesAnswerEmptyWithoutTheDatabase) {
  for (int16_t type : {0, 1, 2, 3, 5}) {
    EXPECT_EQ(pub_.CheckDirNoGrade(u"", type), u"");
    EXPECT_EQ(pub_.CheckDirNoGrade(u"   ", type, true), u"");
  }
  EXPECT_EQ(pub_.CheckInv(u"  "), u"");
  for (int16_t type : {-1, 4, 6, 7, 12, 22}) {
    EXPECT_EQ(pub_.CheckDirNoGrade(u"A1", type), u"");
  }
  EXPECT_TRUE(Sent().empty());

  clsPub unconnected;  // would fail with 3709 at its first query
  EXPECT_EQ(unconnected.CheckDirNoGrade(u"A1", 4), u"");
  EXPECT_EQ(unconnected.CheckInv(u""), u"");
  EXPECT_KAVRIN_ERROR(unconnected.CheckInv(u"A1"), errors::kNoConnection);
}

TEST_F(UngradedChecks, AnEmptyArchiveAnswersEmptyAfterTheProbeAlone) {
  Exec("DELETE FROM Person; DELETE FROM Inventory");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"P1", 5), u"");
  EXPECT_EQ(Sent(), Texts{u"Person"});
  ClearSent();
  EXPECT_EQ(pub_.CheckInv(u"A1", true), u"");
  EXPECT_EQ(Sent(), Texts{u"Inventory"});
}

TEST_F(UngradedChecks, CodeFirstThenNameWithTheirTexts) {
  EXPECT_EQ(pub_.CheckDirNoGrade(u"B2", 0), u"B2");
  EXPECT_EQ(Sent(), (Texts{u"Inventory", u"select * from inventory where cinvcode='B2'"}));
  EXPECT_EQ(pub_.CheckDirNoGrade(u"B2", 0, true), u"Nut  ") << "as stored, not trimmed";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"A1", 0), u"A1") << "a code of one row, a name of another";

  ClearSent();
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Bolt", 0), u"A1");
  EXPECT_EQ(Sent(), (Texts{u"Inventory", u"select * from inventory where cinvcode='Bolt'",
                           u"select * from inventory where cinvname='Bolt'"}));
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Nut", 0), u"B2") << "the first row bearing the name";
  EXPECT_EQ(pub_.CheckDirNoGrade(u" Bolt", 0), u"") << "a leading blank is looked up";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Washer", 0), u"");

  ClearSent();
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Main", 3, true), u"Main");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Li Wei", 5), u"P1");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"P1", 5, true), u"Li Wei");
  EXPECT_EQ(Sent(), (Texts{u"Warehouse", u"select * from warehouse where cwhcode='Main'",
                           u"select * from warehouse where cwhname='Main'", u"Person",
                           u"select * from person where cpersoncode='Li Wei'",
                           u"select * from person where cpersonname='Li Wei'", u"Person",
                           u"select * from person where cpersoncode='P1'"}));
}

TEST_F(UngradedChecks, VendorsByAbbreviationCustomersByCodeOnly) {
  EXPECT_EQ(pub_.CheckDirNoGrade(u"NSW", 1), u"V1");
  EXPECT_EQ(Sent().back(), u"select * from vendor where cvenabbname='NSW'");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Northern Steel Works", 1), u"");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"V1", 1, true), u"NSW");

  EXPECT_EQ(pub_.CheckDirNoGrade(u"C1", 2, true), u"Harbour");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Harbour", 2), u"");
  EXPECT_EQ(Sent(), (Texts{u"Customer", u"select * from customer where ccuscode='Harbour'",
                           u"select * from customer where ccuscode='Harbour'"}));
}

TEST_F(UngradedChecks, NullsAndQuotesFailTheCall) {
  EXPECT_EQ(pub_.CheckDirNoGrade(u"E5", 0), u"E5") << "a Null name not answered is harmless";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirNoGrade(u"E5", 0, true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirNoGrade(u"O'Brien", 5), errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(pub_.CheckInv(u"O'Brien"), errors::kProviderSyntax);
}

TEST_F(UngradedChecks, CheckInvAnswersAnExistingCodeFromTheFirstItem) {
  EXPECT_EQ(pub_.CheckInv(u"D4"), u"A1");
  EXPECT_EQ(Sent(), (Texts{u"Inventory", u"select * from inventory where cinvcode='D4'"}));
  EXPECT_EQ(pub_.CheckInv(u"D4", true), u"Bolt");
  EXPECT_EQ(pub_.CheckInv(u"E5", true), u"Bolt") << "the matched item's Null name is not read";

  // A name that is no code is answered from the item that bears it.
  EXPECT_EQ(pub_.CheckInv(u"Nut"), u"B2");
  EXPECT_EQ(pub_.CheckInv(u"Nut", true), u"Nut  ");
  EXPECT_EQ(pub_.CheckInv(u"Washer"), u"");
}

}  // namespace
}  // namespace kavrin
