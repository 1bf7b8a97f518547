// FromTo, CodeToName and GetAccInfo: codes turned into names and settings.
#include <gtest/gtest.h>

#include <memory>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

class Lookups : public testing::ComponentTest {
 protected:
  Lookups() {
    Exec(
        "INSERT INTO Inventory (cInvCode, cInvName, iInvRCost) VALUES"
        " ('01', 'Steel plate  ', 12.5), ('02', NULL, NULL);"
        "INSERT INTO AccInformation (cSysID, cName, cValue, cDefault) VALUES"
        " ('AA', 'cGoodClass', ' 2 ', '9'), ('AA', 'cDepLevel', NULL, ' 2 '),"
        " ('AA', 'cProvClass', NULL, NULL)");
  }
};

TEST_F(Lookups, FromToLetsFailuresThroughWhereCodeToNameAndGetAccInfoTrapThem) {
  EXPECT_EQ(pub_.FromTo(u"cInvCode", u"01", u"iInvRCost", u"Inventory"), Variant(12.5));
  EXPECT_EQ(Sent().back(), u"select iInvRCost as name from Inventory where cInvCode='01'");
  EXPECT_TRUE(pub_.FromTo(u"cInvCode", u"99", u"cInvName", u"Inventory").IsNull()) << "no row";
  EXPECT_TRUE(pub_.FromTo(u"cInvCode", u"02", u"cInvName", u"Inventory").IsNull());
  EXPECT_KAVRIN_ERROR(pub_.FromTo(u"cInvCode", u"0'1", u"cInvName", u"Inventory"),
                      errors::kProviderSyntax, testing::EngineSource());

  EXPECT_EQ(pub_.CodeToName(u"01", 0), u"Steel plate  ") << "not trimmed";
  for (const char16_t* code : {u"99", u"02", u"0'1"})
    EXPECT_EQ(pub_.CodeToName(code, 0), u"");
  EXPECT_EQ(pub_.CodeToName(u"01", 8), u"") << "vendor classes are asked for a missing column";
  EXPECT_EQ(Sent().back(), u"select cSCName as name from VendorClass where cSCCode='01'");
  ClearSent();
  for (int style : {16, 21, 23, 255})
    EXPECT_EQ(pub_.CodeToName(u"01", uint8_t(style)), u"");
  EXPECT_TRUE(Sent().empty()) << "styles outside the table make no query";

  // GetAccInfo trims the value, but not the default it falls back on.
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"2");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cDepLevel"), u" 2 ");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cProvClass"), u"");
  EXPECT_KAVRIN_ERROR(pub_.GetAccInfo(u"A'A", u"x"), errors::kProviderSyntax,
                      testing::EngineSource());
}

}  // namespace
}  // namespace kavrin
