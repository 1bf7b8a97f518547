// How DBIA comes into being, what init does, and the error convention.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

TEST(Lifecycle, DbiaIsCreatedOnFirstReadAndKept) {
  clsPub pub;
  auto first = pub.DBIA();
  ASSERT_NE(first, nullptr);
  EXPECT_FALSE(first->IsConnected());
  EXPECT_EQ(pub.DBIA(), first);
  pub.DBIA(nullptr);
  auto fresh = pub.DBIA();
  EXPECT_NE(fresh, nullptr);
  EXPECT_NE(fresh, first);
}

TEST(Lifecycle, InitIgnoresItsArgumentsAndKeepsTheAssignedConnection) {
  testing::SuiteDb suite;
  auto db = suite.Open();
  clsPub pub;
  pub.DBIA(db);
  pub.init(u"/no/such/file.mdb", u"secret");
  pub.init(u"");
  EXPECT_EQ(pub.DBIA(), db);

  clsPub fresh;
  fresh.init(u"C:\\UFSMART\\ufdata.mdb");
  EXPECT_NE(fresh.DBIA(), nullptr);
  EXPECT_FALSE(fresh.DBIA()->IsConnected());
}

TEST(Lifecycle, AssignmentSharesTheHostsObject) {
  testing::SuiteDb suite;
  auto db = suite.Open();
  {
    clsPub pub;
    pub.DBIA(db);
    EXPECT_EQ(db.use_count(), 2);
  }
  EXPECT_EQ(db.use_count(), 1) << "destruction releases the reference";
}

TEST(Lifecycle, UnconnectedDefaultFailsOrIsTrappedByGroup) {
  clsPub pub;  // no DBIA assigned: a default, unconnected kit object is used
  EXPECT_KAVRIN_ERROR(pub.GetAccInfo(u"AA", u"cGoodClass"), errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(pub.FromTo(u"cInvCode", u"01", u"cInvName", u"Inventory"),
                      errors::kNoConnection);
  EXPECT_EQ(pub.CodeToName(u"01", 0), u"");
}

}  // namespace
}  // namespace kavrin
