// CheckDirNoGrade and CheckInv: typed codes or names checked against the flat
// archives, on rows built by each test.
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
        " ('A1', 'Bolt'), ('B2', 'Nut  '), ('D4', 'Nut'), ('E5', NULL);"
        "INSERT INTO Vendor (cVenCode, cVenName, cVenAbbName) VALUES ('V1', 'Northern', 'NSW');"
        "INSERT INTO Customer (cCusCode, cCusName, cCusAbbName) VALUES ('C1', 'Harbour Ltd',"
        " 'Harbour');"
        "INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('W1', 'Main');"
        "INSERT INTO Person (cPersonCode, cPersonName) VALUES ('P1', 'Li Wei')");
  }
};

TEST_F(UngradedChecks, CodeFirstThenNameAsEachArchiveNamesItsRows) {
  for (int16_t type : {0, 1, 2, 3, 5})
    EXPECT_EQ(pub_.CheckDirNoGrade(u"   ", type, true), u"");
  for (int16_t type : {-1, 4, 6, 7, 12, 22})
    EXPECT_EQ(pub_.CheckDirNoGrade(u"A1", type), u"");
  EXPECT_TRUE(Sent().empty()) << "nothing is asked for a blank text or another archive";

  EXPECT_EQ(pub_.CheckDirNoGrade(u"Bolt", 0), u"A1");
  EXPECT_EQ(Sent(), (Texts{u"Inventory", u"select * from inventory where cinvcode='Bolt'",
                           u"select * from inventory where cinvname='Bolt'"}));
  EXPECT_EQ(pub_.CheckDirNoGrade(u"B2", 0, true), u"Nut  ") << "as stored, not trimmed";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Nut", 0), u"B2") << "the first row bearing the name";
  EXPECT_EQ(pub_.CheckDirNoGrade(u" Bolt", 0), u"") << "a leading blank is looked up";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Main", 3, true), u"Main");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Li Wei", 5), u"P1");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"NSW", 1), u"V1") << "vendors go by abbreviated name";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"V1", 1, true), u"NSW");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"C1", 2, true), u"Harbour");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Harbour", 2), u"") << "customers go by code only";
  EXPECT_EQ(Sent(), (Texts{u"Customer", u"select * from customer where ccuscode='Harbour'",
                           u"select * from customer where ccuscode='Harbour'"}));
  EXPECT_EQ(pub_.CheckDirNoGrade(u"E5", 0), u"E5") << "a Null name not answered is harmless";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirNoGrade(u"E5", 0, true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirNoGrade(u"O'Brien", 5), errors::kProviderSyntax,
                      testing::EngineSource());
}

TEST_F(UngradedChecks, CheckInvAnswersAnExistingCodeFromTheFirstItem) {
  EXPECT_EQ(pub_.CheckInv(u"  "), u"");
  EXPECT_EQ(pub_.CheckInv(u"D4"), u"A1");
  EXPECT_EQ(Sent(), (Texts{u"Inventory", u"select * from inventory where cinvcode='D4'"}));
  EXPECT_EQ(pub_.CheckInv(u"E5", true), u"Bolt") << "the matched item's Null name is not read";
  EXPECT_EQ(pub_.CheckInv(u"Nut", true), u"Nut  ") << "a name is answered from its own item";

  Exec("DELETE FROM Person; DELETE FROM Inventory");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirNoGrade(u"P1", 5), u"");
  EXPECT_EQ(pub_.CheckInv(u"A1", true), u"");
  EXPECT_EQ(Sent(), (Texts{u"Person", u"Inventory"})) << "an archive without rows: the probe alone";
}

}  // namespace
}  // namespace kavrin
