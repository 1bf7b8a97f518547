// FromTo, CodeToName and GetAccInfo on real suite data.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

class Lookups : public testing::ComponentTest {
 protected:
  Lookups() {
    Exec(
        "INSERT INTO Inventory (cInvCode, cInvName, iInvRCost, cInvM_Unit) VALUES"
        " ('01', 'Steel plate  ', 12.5, NULL), ('02', NULL, NULL, 'kg');"
        "INSERT INTO VendorClass (cVCCode, cVCName, bVCEnd) VALUES ('01', 'Metals', 1);"
        "INSERT INTO Code (cCode, cCode_Name) VALUES ('1403', 'Raw materials');"
        "INSERT INTO CostObj (cCode, cName) VALUES ('01', 'Desks');"
        "INSERT INTO AccInformation (cSysID, cName, cValue, cDefault) VALUES"
        " ('AA', 'cGoodClass', ' 2 ', '9'), ('AA', 'cDepLevel', NULL, ' 2 '),"
        " ('AA', 'cProvClass', NULL, NULL);");
  }
};

TEST_F(Lookups, FromToAnswersTheColumnAsStoredOrNull) {
  EXPECT_EQ(pub_.FromTo(u"cInvCode", u"01", u"iInvRCost", u"Inventory"), Variant(12.5));
  EXPECT_EQ(Sent().back(), u"select iInvRCost as name from Inventory where cInvCode='01'");
  EXPECT_EQ(pub_.FromTo(u"cInvCode", u"01", u"cInvName", u"Inventory"), Variant(u"Steel plate  "));
  EXPECT_TRUE(pub_.FromTo(u"cInvCode", u"99", u"cInvName", u"Inventory").IsNull());
  EXPECT_TRUE(pub_.FromTo(u"cInvCode", u"02", u"cInvName", u"Inventory").IsNull());
  EXPECT_EQ(pub_.FromTo(u"cinvcode", u"01  ", u"cInvName", u"INVENTORY"), Variant(u"Steel plate  "))
      << "names and trailing blanks compare as the database compares them";
}

TEST_F(Lookups, FromToLetsFailuresThrough) {
  EXPECT_KAVRIN_ERROR(pub_.FromTo(u"cInvCode", u"0'1", u"cInvName", u"Inventory"),
                      errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(pub_.FromTo(u"cInvCode", u"01", u"cInvName", u"NoSuchTable"),
                      errors::kProviderNoTable);
}

TEST_F(Lookups, CodeToNameTrapsEverythingIntoTheEmptyString) {
  EXPECT_EQ(pub_.CodeToName(u"01", 0), u"Steel plate  ") << "not trimmed";
  EXPECT_EQ(Sent().back(), u"select cInvName as name from Inventory where cInvCode='01'");
  EXPECT_EQ(pub_.CodeToName(u"1403", 15), u"Raw materials");
  EXPECT_EQ(Sent().back(), u"select ccode_name as name from code where ccode='1403'");
  EXPECT_EQ(pub_.CodeToName(u"01", 22), u"Desks");
  EXPECT_EQ(pub_.CodeToName(u"99", 0), u"") << "no such code";
  EXPECT_EQ(pub_.CodeToName(u"02", 0), u"") << "a Null name";
  EXPECT_EQ(pub_.CodeToName(u"0'1", 0), u"") << "a rejected query";
  EXPECT_EQ(pub_.CodeToName(u"01", 8), u"")
      << "vendor classes are asked for cSCName, which the schema lacks";
  EXPECT_EQ(Sent().back(), u"select cSCName as name from VendorClass where cSCCode='01'");

  ClearSent();
  for (int style : {16, 21, 23, 255}) {
    EXPECT_EQ(pub_.CodeToName(u"01", static_cast<uint8_t>(style)), u"");
  }
  EXPECT_TRUE(Sent().empty()) << "styles outside the table make no query";
}

TEST_F(Lookups, GetAccInfoTrimsTheValueButNotTheDefault) {
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"2");
  EXPECT_EQ(Sent().back(),
            u"SELECT * FROM AccInformation WHERE cSysID='AA' AND cName='cGoodClass'");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cDepLevel"), u" 2 ");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cProvClass"), u"");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cMissing"), u"");
  EXPECT_KAVRIN_ERROR(pub_.GetAccInfo(u"A'A", u"x"), errors::kProviderSyntax);
}

}  // namespace
}  // namespace kavrin
